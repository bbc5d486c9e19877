#include "media_player/frame_output.h"

namespace platform {

FrameOutput::FrameOutput(std::shared_ptr<DisplaySettings> display, double sdr_white)
    : display_(std::move(display)), sdr_white_(sdr_white), painter_(sdr_white)
{
}

void FrameOutput::set_subtitle(std::shared_ptr<SubtitleTrack> subtitle,
                               std::function<void(const SubtitleTrack::Cue &)> on_cue)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    subtitle_ = std::move(subtitle);
    on_cue_ = std::move(on_cue);
}

void FrameOutput::set_visible(bool visible)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    visible_ = visible;
}

void FrameOutput::close()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    closed_ = true;
    frame_.reset();
    painted_.reset();
    painted_view_ = {};
}

void FrameOutput::set_format(const std::string &stream, GstVideoInfo info,
                             const TaggedColour &colour, double peak)
{
    info.colorimetry = colour.parts;
    const std::lock_guard<std::mutex> lock(mutex_);
    painter_.set_format(info, peak);
    facts_.on_frames(stream, colour, {painter_.is_exact(), peak, sdr_white_});
    frame_.reset();
    painted_.reset();
    width_ = GST_VIDEO_INFO_WIDTH(&info);
    height_ = GST_VIDEO_INFO_HEIGHT(&info);
}

void FrameOutput::set_orientation(GstVideoOrientationMethod method)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    stored_ = orientation_of(method);
}

void FrameOutput::set_at_end(bool at_end)
{
    at_end_ = at_end;
    if (at_end && on_end_)
        on_end_();
}

bool FrameOutput::is_painted_for(const DisplayView &view) const
{
    return painted_ && painted_view_ == view && painted_->width() == view.plane->width() &&
           painted_->height() == view.plane->height();
}

bool FrameOutput::paint(GstBuffer *frame, GstClockTime position, const DisplayView &view)
{
    painted_.reset();
    if (!view.plane)
        return false;
    PlaneBufferPtr picture = view.plane->acquire();
    if (!picture || !painter_.paint(frame, stored_, view, *picture)) {
        ++dropped_;
        view.plane->count_dropped();
        return false;
    }
    if (subtitle_ && GST_CLOCK_TIME_IS_VALID(position))
        subtitle_->draw(GST_TIME_AS_MSECONDS(position), picture->pixels(), picture->width(),
                        picture->height(), picture->stride(), (360 - view.panel_angle) % 360);
    painted_ = std::move(picture);
    painted_view_ = view;
    return true;
}

void FrameOutput::prepare(GstBuffer *frame, GstClockTime position)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (closed_)
        return;
    const DisplayView view = display_->view();
    // The frame that filled the pipeline comes once more when the pipeline starts to run, after a
    // pause as one that is on screen already.
    if (frame_.get() == frame && frame_position_ == position &&
        (frame_shown_ || is_painted_for(view)))
        return;
    if (frame_.get() != frame)
        frame_.reset(gst_buffer_ref(frame));
    frame_position_ = position;
    frame_shown_ = false;
    // A file that is open ahead may wait for long, and a picture is megabytes.
    if (visible_)
        paint(frame, position, view);
}

bool FrameOutput::show(GstBuffer *frame, GstClockTime position, bool late)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (closed_ || !visible_)
        return true;
    if (GST_CLOCK_TIME_IS_VALID(position))
        position_ = position;
    if (frame_shown_ && frame_.get() == frame)
        return true;
    const DisplayView view = display_->view();
    if (!is_painted_for(view) && !paint(frame, position, view))
        return true;
    const bool presented = view.plane->present(painted_);
    painted_.reset();
    frame_shown_ = true;
    if (presented) {
        shown_++;
        if (late && direction_ == 1.0) {
            late_++;
            view.plane->count_late();
        }
        report_cue(position);
    }
    return presented;
}

void FrameOutput::redraw()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (closed_ || !visible_ || !frame_ || !frame_shown_)
        return;
    const DisplayView view = display_->view();
    if (paint(frame_.get(), frame_position_, view)) {
        view.plane->present(painted_);
        painted_.reset();
    }
}

void FrameOutput::count_dropped()
{
    ++dropped_;
    if (const std::shared_ptr<VideoPlane> plane = display_->view().plane)
        plane->count_dropped();
}

VideoStatus FrameOutput::status() const
{
    VideoStatus status = facts_.get();
    status.interlaced = status.interlaced || field_pace_.had_fields();
    status.halved = field_pace_.is_halved();
    status.shown = shown_;
    status.dropped = dropped_;
    status.late = late_;
    return status;
}

void FrameOutput::report_cue(GstClockTime position)
{
    if (!subtitle_ || !GST_CLOCK_TIME_IS_VALID(position))
        return;
    const SubtitleTrack::Cue *cue = subtitle_->cue_at(GST_TIME_AS_MSECONDS(position));
    if (cue && cue != reported_cue_ && on_cue_)
        on_cue_(*cue);
    reported_cue_ = cue;
}

} // namespace platform
