/**
 * What the subtitle tests share: files made on the spot, a picture to draw into, and the log lines
 * that the service has written.
 */
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "subtitles/subtitle_track.h"

/** A picture of one flat colour, with an eye for what has been drawn into it. */
class Picture {
  public:
    struct Box {
        int left;
        int top;
        int right;  ///< exclusive
        int bottom; ///< exclusive
        int width() const { return right - left; }
        int height() const { return bottom - top; }
    };

    Picture(int width, int height, uint32_t colour = BACKGROUND);

    bool draw(platform::SubtitleTrack &track, int64_t position_ms, int degrees = 0);

    int width() const { return width_; }
    int height() const { return height_; }
    uint32_t at(int x, int y) const;
    /** Red, green and blue of a pixel added up, 0 to 765. */
    int brightness(int x, int y) const;
    bool untouched() const { return changed_count() == 0; }
    int changed_count() const;
    /** Changed pixels of a column, for finding letters and the gaps between them. */
    int changed_in_column(int x) const;
    Box changed_box() const;
    /** Pixels at least as bright as the given sum of the three colours. */
    int bright_count(int brightness) const;
    /** This picture turned back, so that text drawn with this turn stands upright. */
    Picture turned_back(int degrees) const;
    /** Hash of all the pixels, to tell two drawings apart. */
    size_t fingerprint() const;

    static constexpr uint32_t BACKGROUND = 0xFF2060A0;

  private:
    int width_;
    int height_;
    uint32_t colour_;
    std::vector<uint32_t> pixels_;
};

class SubtitleTest : public testing::Test {
  protected:
    SubtitleTest();
    ~SubtitleTest() override;

    /** Writes a file into the test's own folder and returns its path. */
    std::string write(const std::string &name, const std::string &content) const;
    const std::string &folder() const { return folder_; }

    /** Loads a file with this content; a failure fails the test and tells why. */
    std::unique_ptr<platform::SubtitleTrack> load(const std::string &name,
                                                  const std::string &content) const;
    /** Loads a file that must be refused; returns the error sentence. */
    std::string refusal(const std::string &path) const;

    /** Text on screen at a time, or "(none)". */
    static std::string text_at(const platform::SubtitleTrack &track, int64_t position_ms);

    /** Log lines so far that hold a text. */
    static int log_lines_with(const std::string &text);
    /** Log lines so far above the information level. */
    static std::vector<std::string> complaints();

  private:
    std::string folder_;
};

/** A SubRip file with one text from 1 s to 3 s. */
std::string one_cue_srt(const std::string &text);
