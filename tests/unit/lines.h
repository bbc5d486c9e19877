/**
 * Comparing transcripts: `EXPECT_THAT(fake_.calls(), LinesAre("player_stop()", …))`.
 */
#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

using Lines = std::vector<std::string>;

/**
 * As ElementsAre() with texts only. One matcher for all lengths: ElementsAre() makes a new type for
 * each list of literals, which takes the compiler very long.
 */
template <typename... Texts> auto LinesAre(const Texts &...texts)
{
    return testing::ElementsAreArray(Lines{std::string(texts)...});
}
