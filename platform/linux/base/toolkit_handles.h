/**
 * Owners of what the toolkit hands out. Main-loop thread only; they end before the toolkit is shut
 * down.
 *
 * After its call a job is gone, and so is a timer, idler or handler whose callback returns
 * ECORE_CALLBACK_CANCEL. Such a callback lets go of the owner with release(). One that resets the
 * owner returns ECORE_CALLBACK_RENEW.
 */
#pragma once

#include <memory>

#include <Ecore.h>
#include <Ecore_Evas.h>
#include <Evas.h>

namespace platform {

template <auto END> struct HandleEnd {
    template <typename Handle> void operator()(Handle *handle) const { END(handle); }
};

using TimerPtr = std::unique_ptr<Ecore_Timer, HandleEnd<ecore_timer_del>>;
using JobPtr = std::unique_ptr<Ecore_Job, HandleEnd<ecore_job_del>>;
using IdlerPtr = std::unique_ptr<Ecore_Idler, HandleEnd<ecore_idler_del>>;
using IdleEntererPtr = std::unique_ptr<Ecore_Idle_Enterer, HandleEnd<ecore_idle_enterer_del>>;
using EventHandlerPtr = std::unique_ptr<Ecore_Event_Handler, HandleEnd<ecore_event_handler_del>>;
using FdHandlerPtr = std::unique_ptr<Ecore_Fd_Handler, HandleEnd<ecore_main_fd_handler_del>>;
using IteratorPtr = std::unique_ptr<Eina_Iterator, HandleEnd<eina_iterator_free>>;
using CanvasPtr = std::unique_ptr<Ecore_Evas, HandleEnd<ecore_evas_free>>;
using ObjectPtr = std::unique_ptr<Evas_Object, HandleEnd<evas_object_del>>;

} // namespace platform
