#include "media_player/player_errors.h"

#include <cstring>

#include "media_player.h"

namespace platform {
namespace {

bool is_a(const char *klass, const char *kind)
{
    return std::strstr(klass, kind) != nullptr;
}

Failure::Part part_of(GstObject *source)
{
    if (!source || !GST_IS_ELEMENT(source))
        return Failure::Part::Picture;
    const char *klass = gst_element_get_metadata(GST_ELEMENT(source), GST_ELEMENT_METADATA_KLASS);
    if (!klass)
        return Failure::Part::Picture;
    if (is_a(klass, "Sink") && is_a(klass, "Audio"))
        return Failure::Part::SoundDevice;
    if (is_a(klass, "Sink") && is_a(klass, "Video"))
        return Failure::Part::Display;
    // A demuxer is neither; a broken file is not to be mistaken for a broken sound track.
    if (is_a(klass, "Audio") && !is_a(klass, "Demuxer"))
        return Failure::Part::Sound;
    return Failure::Part::Picture;
}

int resource_code(int code)
{
    switch (code) {
    case GST_RESOURCE_ERROR_NOT_FOUND:
        return PLAYER_ERROR_NO_SUCH_FILE;
    case GST_RESOURCE_ERROR_NOT_AUTHORIZED:
        return PLAYER_ERROR_PERMISSION_DENIED;
    case GST_RESOURCE_ERROR_BUSY:
    case GST_RESOURCE_ERROR_NO_SPACE_LEFT:
        return PLAYER_ERROR_RESOURCE_LIMIT;
    default:
        return PLAYER_ERROR_INVALID_OPERATION;
    }
}

int stream_code(int code)
{
    return code == GST_STREAM_ERROR_CODEC_NOT_FOUND ? PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC
                                                    : PLAYER_ERROR_NOT_SUPPORTED_FILE;
}

} // namespace

Failure read_failure(GstMessage *message)
{
    GError *error = nullptr;
    char *details = nullptr;
    gst_message_parse_error(message, &error, &details);
    const ErrorPtr owned_error(error);
    const CharsPtr owned_details(details);

    Failure failure;
    failure.part = part_of(GST_MESSAGE_SRC(message));
    failure.text = error->message;
    failure.details = details ? details : "";
    if (error->domain == GST_RESOURCE_ERROR) {
        failure.busy = error->code == GST_RESOURCE_ERROR_BUSY;
        failure.code = resource_code(error->code);
    } else if (error->domain == GST_STREAM_ERROR) {
        failure.code = stream_code(error->code);
    } else if (error->domain == GST_CORE_ERROR && error->code == GST_CORE_ERROR_MISSING_PLUGIN) {
        failure.code = PLAYER_ERROR_NOT_SUPPORTED_VIDEO_CODEC;
    } else {
        failure.code = PLAYER_ERROR_INVALID_OPERATION;
    }
    return failure;
}

} // namespace platform
