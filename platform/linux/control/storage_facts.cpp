#include "control/storage_facts.h"

namespace platform {

StorageFacts read_storage(const StorageQuestion &question)
{
    StorageFacts facts;
    if (!question.file.empty())
        facts.list = content_list_of(question.file, question.direct_backlight, question.list_made);
    facts.usb = usb_mount_paths(question.usb);
    return facts;
}

} // namespace platform
