/**
 * What is found out about why a file cannot be prepared, and what follows from it. One thread at a
 * time.
 */
#pragma once

#include <map>
#include <string>

#include "media_player/pipeline.h"
#include "unplayable_files/unplayable_files.h"

namespace platform {

class FailureFacts {
  public:
    /** As PipelineEvents tell them, over all pipelines of the file. */
    void on_decoder_missing(Track track, const std::string &what);
    void on_format_refused(const std::string &what) { refused_format_ = what; }

    /** Its first frame did not come. */
    void on_timed_out() { timed_out_ = true; }
    bool timed_out() const { return timed_out_; }

    /** The decoders that are missing for a track, in words; empty: none. */
    std::string missing_decoders(Track track) const;

    /** @param otherwise the reason where no better one is known */
    std::string why_no_picture(const std::string &otherwise) const;

    /**
     * Whether it fails for what it is, and not for what is around it: a new start of the program
     * makes no difference to it.
     *
     * @param error_code a player error
     */
    bool is_its_own_fault(int error_code) const;

    /** What it is told as. @param error_code a player error */
    UnplayableFile::Kind kind(int error_code) const;

  private:
    std::map<Track, std::string> missing_decoders_; ///< in words
    std::string refused_format_;                    ///< likewise
    bool timed_out_ = false;
};

} // namespace platform
