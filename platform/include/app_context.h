/**
 * The player's standing with the rest of the set: application context, blocking of the set's own
 * pop-ups ("E-POP") and of items in its settings menu, and the start of two platform libraries that
 * every UI application of the set starts. Main-loop thread only.
 */
#pragma once

#include <string>
#include <vector>

extern "C" {

/** Connects to the application-context manager. @return 0, or -1. */
int app_context_manager_init(void);

/** Disconnects; a block still held is released. */
void app_context_manager_fini(void);

/** Keeps the set's own pop-ups from showing. @return 0, or -1 without a connection. */
int app_context_manager_set_epop_block(void);

/**
 * Lets them show again. Doing so without a block, or after app_context_manager_fini(), which has
 * released it, is not an error.
 *
 * @return 0, or -1 when the manager refused
 */
int app_context_manager_unset_epop_block(void);

/** Starts the UI configuration manager (fonts and sizes of the set's user interface). @return 0. */
int ui_config_manager_init(void);

/** Ends it. */
void ui_config_manager_fini(void);

/** Starts the set's Elementary additions; once per process, before the first window. @return 0. */
int ea_init(void);
}

/** The settings service: which items of the settings menu are out of bounds, and for whom. */
class SettingsAPI {
  public:
    /** The service; never null, owned by the platform. */
    static SettingsAPI *Get();

    /**
     * Blocks menu items until the application releases them.
     *
     * @param items  names of menu items; copied, and their order kept
     * @param app_id the application on whose behalf they are blocked
     */
    void DisableItemsByList(const std::vector<std::string> &items, const std::string &app_id);

    /** Releases every item that the application blocked. */
    void RemoveDisabledItemsByAppname(const std::string &app_id);

  private:
    SettingsAPI() = default;
};
