#include <gtest/gtest.h>

#include "resource_path.h"
#include "settings/settings.h"
#include "store_support/scratch.h"

namespace {

// The settings of the process are read once, so the folder is named before the first test asks.
class ResourcePath : public testing::Test {
  protected:
    static void SetUpTestSuite()
    {
        scratch_ = new store_test::ScratchDir;
        const store_test::Environment resources("OSTREL_DEMO_RESOURCE_DIR", scratch_->path());
        store_test::write_file(*scratch_ / "image/a.png", "picture");
        platform::Settings::get();
    }
    static void TearDownTestSuite()
    {
        delete scratch_;
        scratch_ = nullptr;
    }

    static store_test::ScratchDir *scratch_;
};

store_test::ScratchDir *ResourcePath::scratch_ = nullptr;

TEST_F(ResourcePath, IsFoundByItsPath)
{
    char *path = getResourcePath("org.tizen.video-player-tv", "image/a.png");
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(store_test::read_file(path), "picture");
    freeResourcePath(path);
}

TEST_F(ResourcePath, MissingIsNull)
{
    EXPECT_EQ(getResourcePath("org.tizen.video-player-tv", "image/b.png"), nullptr);
    EXPECT_EQ(getResourcePath("org.tizen.video-player-tv", ""), nullptr);
    EXPECT_EQ(getResourcePath("org.tizen.video-player-tv", nullptr), nullptr);
    EXPECT_EQ(getResourcePath(nullptr, "image/a.png"), nullptr);
    freeResourcePath(nullptr);
}

} // namespace
