/**
 * What several files of the player need of EFL in the same way: letting go of an object or a timer,
 * the primary button of the pointer, and the translated texts. Main loop only.
 */
#pragma once

#include <libintl.h>

#include <Elementary.h>

/** Evas counts the buttons of the pointer from one. */
inline constexpr int PRIMARY_BUTTON = 1;

/** Deletes an object, if there is one, and forgets it. */
inline void DeleteObject(Evas_Object *&pObject)
{
    if (pObject == nullptr)
        return;
    evas_object_del(pObject);
    pObject = nullptr;
}

/** Deletes a timer, if there is one, and forgets it. */
inline void DeleteTimer(Ecore_Timer *&pTimer)
{
    if (pTimer == nullptr)
        return;
    ecore_timer_del(pTimer);
    pTimer = nullptr;
}

/** The text of an id in the language of the set; the catalogue's own, never to be freed. */
inline const char *Translated(const char *pTextId)
{
    return dgettext("ostrel-demo-player-tv", pTextId);
}
