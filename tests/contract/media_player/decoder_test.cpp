// Codecs that nothing on the machine decodes: the log names them, so that the package can be found.

#include <atomic>
#include <memory>
#include <string_view>

#include <dlfcn.h>

#include <gmock/gmock.h>

#include "media_player/gst_ptr.h"
#include "media_player/media_system.h"
#include "player_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

std::atomic<int> loaded_by_themselves{0};

} // namespace

// Stands before the C library's in this program.
extern "C" void *dlopen(const char *file, int mode)
{
    using Open = void *(*)(const char *, int);
    static const auto open = reinterpret_cast<Open>(dlsym(RTLD_NEXT, "dlopen"));
    if (file && (mode & RTLD_DEEPBIND) != 0 &&
        std::string_view(file).find("libgstlibav.so") != std::string_view::npos)
        loaded_by_themselves++;
    return open(file, mode);
}

namespace player_test {
namespace {

/** Takes every decoder of a kind of stream away, as long as it lives. */
class WithoutDecoders {
  public:
    explicit WithoutDecoders(const char *media)
    {
        const platform::CapsPtr caps(gst_caps_new_empty_simple(media));
        GList *all = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER,
                                                           GST_RANK_MARGINAL);
        GList *able = gst_element_factory_list_filter(all, caps.get(), GST_PAD_SINK, FALSE);
        for (const GList *entry = able; entry; entry = entry->next) {
            auto *factory = GST_PLUGIN_FEATURE(gst_object_ref(entry->data));
            taken_.push_back({factory, gst_plugin_feature_get_rank(factory)});
            gst_plugin_feature_set_rank(factory, GST_RANK_NONE);
        }
        gst_plugin_feature_list_free(able);
        gst_plugin_feature_list_free(all);
    }
    ~WithoutDecoders()
    {
        for (const Taken &taken : taken_) {
            gst_plugin_feature_set_rank(taken.factory, taken.rank);
            gst_object_unref(taken.factory);
        }
    }
    WithoutDecoders(const WithoutDecoders &) = delete;
    WithoutDecoders &operator=(const WithoutDecoders &) = delete;

    bool any() const { return !taken_.empty(); }

  private:
    struct Taken {
        GstPluginFeature *factory;
        guint rank;
    };
    std::vector<Taken> taken_;
};

class Decoder : public PlayerTest {
  protected:
    /** Prepares a file and returns what has been logged when that has come to something. */
    std::string log_of(const std::string &file)
    {
        const size_t before = events().size();
        testing::internal::CaptureStderr();
        EXPECT_EQ(prepare(file), PLAYER_ERROR_NONE);
        EXPECT_TRUE(wait_for([&] { return events().size() > before; }));
        return testing::internal::GetCapturedStderr();
    }
};

TEST_F(Decoder, ThatIsMissingForThePictureIsNamed)
{
    Clip mute;
    mute.sound = false;
    const std::string files[] = {clip("a.mp4"), clip("mute.mp4", mute)};
    const WithoutDecoders gone("video/x-h264");
    ASSERT_TRUE(gone.any());
    for (const std::string &file : files) {
        SCOPED_TRACE(file);
        EXPECT_THAT(log_of(file), HasSubstr(file + " cannot be played: no decoder is installed for "
                                                   "it (H.264"));
        EXPECT_THAT(events().back(), StartsWith("error"));
        make_player();
    }
}

TEST_F(Decoder, ThatIsMissingForThePictureIsLookedForEachTime)
{
    platform::UnplayableFiles unplayable;
    platform::FruitlessRounds rounds;
    platform::PlayerOptions options = usual_options();
    options.unplayable_files = &unplayable;
    options.fruitless_rounds = &rounds;
    make_player(options);
    const std::string file = clip("a.mp4");
    {
        const WithoutDecoders gone("video/x-h264");
        ASSERT_TRUE(gone.any());
        for (int time = 0; time < 2; time++) {
            EXPECT_TRUE(prepared(file)) << "it is passed over";
            ASSERT_EQ(unplayable.all().size(), 1u);
            EXPECT_EQ(unplayable.all()[0].kind, platform::UnplayableFile::Kind::NoDecoder);
            player_->unprepare();
        }
    }

    EXPECT_TRUE(playing(file));
}

TEST_F(Decoder, ThatIsMissingForTheSoundIsNamed)
{
    const std::string file = clip("a.mp4");
    const WithoutDecoders gone("audio/mpeg");
    ASSERT_TRUE(gone.any());

    EXPECT_THAT(log_of(file),
                HasSubstr(file + " plays in silence: no decoder is installed for it (MPEG-4 AAC"));
    ASSERT_TRUE(wait_for_event("prepared"));
    EXPECT_THAT(events(), ElementsAre("error -26476496", "prepared"));
}

TEST_F(Decoder, ThatNobodyKnowsIsNamedByItsStream)
{
    std::string contents = read_file(clip("a.mkv"));
    const size_t codec = contents.find("V_MPEG4/ISO/AVC");
    ASSERT_NE(codec, std::string::npos);
    write_file(path("odd.mkv"), contents.replace(codec, 15, "V_MPEG4/ISO/XYZ"));

    EXPECT_THAT(log_of(path("odd.mkv")), HasSubstr("no decoder is installed for it ("));
}

// With a sanitizer the allocator is not the C library's, and everybody has to find the sanitizer's.
TEST_F(Decoder, LibrariesLookAmongThemselvesFirstWhereTheAllocatorIsTheUsualOne)
{
    const auto is_loaded = [] {
        const std::unique_ptr<GstPlugin, platform::GstObjectUnref> plugin(
            gst_registry_find_plugin(gst_registry_get(), "libav"));
        return plugin && gst_plugin_is_loaded(plugin.get());
    };
    platform::load_decoders();
    ASSERT_TRUE(wait_for(is_loaded));
    platform::abandon_media_system(); // it may be at the next decoder

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    EXPECT_EQ(loaded_by_themselves, 0);
#else
    EXPECT_TRUE(wait_for([] { return loaded_by_themselves > 0; }));
#endif
}

TEST_F(Decoder, ThatIsThereIsNotMissed)
{
    EXPECT_THAT(log_of(clip("a.mp4")), Not(HasSubstr("decoder")));
    make_sound(path("song.ogg"));
    make_player();
    EXPECT_THAT(log_of(path("song.ogg")), HasSubstr("it has no picture"));
}

} // namespace
} // namespace player_test
