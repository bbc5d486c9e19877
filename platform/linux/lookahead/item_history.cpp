#include "lookahead/item_history.h"

namespace platform {

void ItemHistory::on_begun(const PlayedItem &item, bool interrupted)
{
    if (followers_.size() >= limit_)
        followers_.clear();
    if (!interrupted && !latest_.path.empty())
        followers_[latest_.path] = item;
    latest_ = item;
}

std::optional<PlayedItem> ItemHistory::after(const std::string &path) const
{
    const auto found = followers_.find(path);
    if (found == followers_.end())
        return std::nullopt;
    return found->second;
}

} // namespace platform
