#include "key_router.h"

#include "log/platform_log.h"
#include "panel/panel_model.h"

namespace platform {

namespace {

/** Presses keys of the set on behalf of a program. It knows one, the panel's. */
class VirtualKeyService {
  public:
    static VirtualKeyService &get()
    {
        static VirtualKeyService service;
        return service;
    }

    void start() { started_ = true; }
    void stop() { started_ = false; }

    bool send(int key_code, int action)
    {
        if (!started_ || key_code != VIRTUAL_KEY_CODE_ROTATE_PANEL ||
            action != VIRTUAL_KEY_ACTION_CLICK) {
            PLATFORM_LOGW("virtual_key", "key code %d with action %d not sent", key_code, action);
            return false;
        }
        // The key is sent whether or not this set has a motor that listens to it.
        PanelModel::get().toggle();
        return true;
    }

  private:
    bool started_ = false;
};

} // namespace

} // namespace platform

using platform::VirtualKeyService;

int VirtualKey_Initialize(int /*flags*/)
{
    VirtualKeyService::get().start();
    return 0;
}

int VirtualKey_Send_KeyCode(int key_code, int action)
{
    return VirtualKeyService::get().send(key_code, action) ? 0 : -1;
}

void VirtualKey_Finalize(void)
{
    VirtualKeyService::get().stop();
}
