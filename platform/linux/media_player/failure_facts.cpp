#include "media_player/failure_facts.h"

#include "media_player.h"

namespace platform {

void FailureFacts::on_decoder_missing(Track track, const std::string &what)
{
    std::string &missing = missing_decoders_[track];
    if (missing.find(what) == std::string::npos)
        missing += (missing.empty() ? "" : ", ") + what;
}

std::string FailureFacts::missing_decoders(Track track) const
{
    const auto missing = missing_decoders_.find(track);
    return missing == missing_decoders_.end() ? std::string() : missing->second;
}

// GStreamer's own sentence about a missing decoder does not say which one.
std::string FailureFacts::why_no_picture(const std::string &otherwise) const
{
    if (!refused_format_.empty())
        return "it is none of the kinds of video that are played (" + refused_format_ + ")";
    const std::string missing = missing_decoders(Track::Picture);
    return missing.empty() ? otherwise : "no decoder is installed for it (" + missing + ")";
}

bool FailureFacts::is_its_own_fault(int error_code) const
{
    // A decoder that is missing may have failed to load, or be installed one day.
    if (missing_decoders_.count(Track::Picture) > 0)
        return false;
    return error_code == PLAYER_ERROR_NOT_SUPPORTED_FILE ||
           error_code == PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC ||
           error_code == PLAYER_ERROR_PERMISSION_DENIED;
}

UnplayableFile::Kind FailureFacts::kind(int error_code) const
{
    if (timed_out_)
        return UnplayableFile::Kind::TooSlow;
    if (missing_decoders_.count(Track::Picture) > 0)
        return UnplayableFile::Kind::NoDecoder;
    switch (error_code) {
    case PLAYER_ERROR_NOT_SUPPORTED_FILE:
    case PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC:
        return UnplayableFile::Kind::Damaged;
    case PLAYER_ERROR_NO_SUCH_FILE:
    case PLAYER_ERROR_PERMISSION_DENIED:
        return UnplayableFile::Kind::Unreadable;
    default:
        return UnplayableFile::Kind::Refused;
    }
}

} // namespace platform
