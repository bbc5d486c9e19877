// Videos and subtitles that name other files and places on the network, under whatever name they
// lie in the folder: nothing of it is opened.

#include <atomic>
#include <filesystem>

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netinet/in.h>
#include <sys/inotify.h>
#include <sys/socket.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "base/descriptor.h"
#include "media_player/gst_ptr.h"
#include "player_fixture.h"

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using testing::UnorderedElementsAre;

namespace {

std::atomic<int> internet_sockets{0};

} // namespace

// Stands before the C library's in this program, for all of its libraries.
extern "C" int socket(int domain, int type, int protocol) noexcept
{
    using Make = int (*)(int, int, int);
    static const auto make = reinterpret_cast<Make>(dlsym(RTLD_NEXT, "socket"));
    if (domain == AF_INET || domain == AF_INET6)
        internet_sockets++;
    return make(domain, type, protocol);
}

namespace player_test {
namespace {

std::string replaced(std::string text, const std::string &what, const std::string &by)
{
    for (size_t place = 0; (place = text.find(what, place)) != std::string::npos;
         place += by.size())
        text.replace(place, what.size(), by);
    return text;
}

std::string big_endian(uint64_t value, int bytes)
{
    std::string text;
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
        text += static_cast<char>(value >> shift);
    return text;
}

/** A box of a QuickTime file. */
std::string box(const std::string &kind, const std::string &contents)
{
    return big_endian(contents.size() + 8, 4) + kind + contents;
}

/** A folder beside the file, with films in it, and a server; both notice who comes. */
class OtherPlaces : public PlayerTest {
  protected:
    void SetUp() override
    {
        PlayerTest::SetUp();
        std::filesystem::create_directory(path("beside"));
        Clip facts;
        facts.frames = 10;
        for (const char *name : {"film.ts", "film.mp4", "film.mkv"})
            clip(std::string("beside/") + name, facts);
        write_file(path("beside/letters.ttf"), "no letters\n");

        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto *general = reinterpret_cast<sockaddr *>(&address);
        server_ =
            platform::Descriptor(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        ASSERT_EQ(bind(server_.number(), general, size), 0);
        ASSERT_EQ(listen(server_.number(), 16), 0);
        ASSERT_EQ(getsockname(server_.number(), general, &size), 0);
        port_ = std::to_string(ntohs(address.sin_port));

        opened_ = platform::Descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
        ASSERT_GE(inotify_add_watch(opened_.number(), path("beside").c_str(), IN_OPEN), 0);
        internet_sockets = 0;
    }

    /** What the lures below mean in this test's folder. */
    std::string with_places(std::string text) const
    {
        text = replaced(text, "$FILE", path("beside/film.ts"));
        text = replaced(text, "$LETTERS", path("beside/letters.ttf"));
        text = replaced(text, "$NET", "http://127.0.0.1:" + port_ + "/film");
        return replaced(text, "$PORT", port_);
    }

    /** Where anybody has been since the last question. */
    std::vector<std::string> visited()
    {
        std::vector<std::string> all;
        alignas(inotify_event) char buffer[4096];
        for (ssize_t size; (size = read(opened_.number(), buffer, sizeof buffer)) > 0;)
            for (ssize_t at = 0; at < size;) {
                const auto *event = reinterpret_cast<const inotify_event *>(buffer + at);
                all.emplace_back(event->len > 0 ? event->name : "the folder");
                at += static_cast<ssize_t>(sizeof *event + event->len);
            }
        for (int guest; (guest = accept(server_.number(), nullptr, nullptr)) >= 0; close(guest))
            all.emplace_back("the server");
        if (internet_sockets.exchange(0) > 0)
            all.emplace_back("the network");
        return all;
    }

    /** Prepares a file, plays it where that can be done, lets go of it. @return what was told */
    std::vector<std::string> outcome(const std::string &file)
    {
        if (prepare(file) != PLAYER_ERROR_NONE || !wait_for([this] { return !events().empty(); }))
            return {"nothing"};
        if (player_->start() == PLAYER_ERROR_NONE)
            wait_for_event("completed");
        player_->destroy();
        return events();
    }

    platform::Descriptor server_;
    platform::Descriptor opened_;
    std::string port_;
};

TEST_F(OtherPlaces, WouldNoticeAVisit)
{
    EXPECT_THAT(visited(), IsEmpty());

    read_file(path("beside/film.ts"));
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(std::stoi(port_)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const platform::Descriptor guest(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    EXPECT_EQ(connect(guest.number(), reinterpret_cast<const sockaddr *>(&address), sizeof address),
              0);

    EXPECT_THAT(visited(), UnorderedElementsAre("film.ts", "the server", "the network"));
    EXPECT_THAT(visited(), IsEmpty());
}

/** A file that is nothing but a way to others. */
struct Lure {
    const char *file;
    std::string text;
};

const Lure LURES[] = {
    {"hls.mp4", "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:2\n#EXT-X-MEDIA-SEQUENCE:0\n"
                "#EXTINF:2,\nfile://$FILE\n#EXTINF:2,\n$NET.ts\n#EXT-X-ENDLIST\n"},
    {"hls_master.ts", "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=100000\n$NET.m3u8\n"},
    {"hls_behind_tags.mp4", std::string("ID3\x04\0\0\0\0\0\x14", 10) + std::string(20, '\0') +
                                "#EXTM3U\n#EXT-X-STREAM-INF:BANDWIDTH=100000\n$NET.m3u8\n"},
    {"dash.mkv", "<?xml version=\"1.0\"?>\n<MPD xmlns=\"urn:mpeg:dash:schema:mpd:2011\" "
                 "type=\"static\" mediaPresentationDuration=\"PT2S\" minBufferTime=\"PT1S\" "
                 "profiles=\"urn:mpeg:dash:profile:isoff-on-demand:2011\"><Period><AdaptationSet "
                 "mimeType=\"video/mp4\"><Representation id=\"1\" bandwidth=\"100000\" "
                 "codecs=\"avc1.42c00b\"><BaseURL>$NET.mp4</BaseURL></Representation>"
                 "</AdaptationSet></Period></MPD>\n"},
    {"smooth.wmv", "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<SmoothStreamingMedia "
                   "MajorVersion=\"2\" MinorVersion=\"0\" Duration=\"20000000\"><StreamIndex "
                   "Type=\"video\" QualityLevels=\"1\" Chunks=\"1\" Url=\"$NET/{bitrate}/"
                   "{start time}\"><QualityLevel Index=\"0\" Bitrate=\"100000\" FourCC=\"H264\" "
                   "MaxWidth=\"160\" MaxHeight=\"90\" CodecPrivateData=\"\"/><c n=\"0\" "
                   "d=\"20000000\"/></StreamIndex></SmoothStreamingMedia>\n"},
    {"session.mp4", "v=0\r\no=- 0 0 IN IP4 127.0.0.1\r\ns=demo\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n"
                    "m=video $PORT RTP/AVP 96\r\na=rtpmap:96 H264/90000\r\n"},
    {"list.avi", "#EXTM3U\n$FILE\n$NET.ts\n"},
    {"addresses.flv", "$NET.flv\nfile://$FILE\n"},
    {"entries.mpeg", "[playlist]\nNumberOfEntries=2\nFile1=$FILE\nFile2=$NET.mpeg\n"},
    {"references.asf", "[Reference]\r\nRef1=$NET.asf\r\nRef2=$FILE\r\n"},
    {"asx.wmv", "<asx version=\"3.0\"><entry><ref href=\"$NET.wmv\"/></entry></asx>\n"},
    {"smil.tp", "<?xml version=\"1.0\"?>\n<smil><body><video src=\"$NET.tp\"/></body></smil>\n"},
    {"concat.ogg", "ffconcat version 1.0\nfile '$FILE'\n"},
    {"project.mp4", "<?xml version=\"1.0\"?>\n<ges version='0.7'><project><ressources><asset "
                    "id='file://$FILE'/></ressources></project></ges>\n"},
    {"drawing.mp4", "<?xml version=\"1.0\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
                    "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"160\" height=\"90\">"
                    "<image width=\"9\" height=\"9\" xlink:href=\"file://$FILE\"/>"
                    "<image width=\"9\" height=\"9\" xlink:href=\"$NET.png\"/></svg>\n"},
};

class Lures : public OtherPlaces, public testing::WithParamInterface<Lure> {};

TEST_P(Lures, AreNotFollowed)
{
    write_file(path(GetParam().file), with_places(GetParam().text));

    EXPECT_THAT(outcome(path(GetParam().file)), ElementsAre(StartsWith("error")));

    EXPECT_THAT(visited(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Each, Lures, testing::ValuesIn(LURES),
                         [](const auto &given) { return replaced(given.param.file, ".", "_"); });

TEST_F(OtherPlaces, AreNamedInTheLogByTheKindOfTheFile)
{
    write_file(path("drawing.mp4"), "<svg xmlns=\"http://www.w3.org/2000/svg\"></svg>\n");
    testing::internal::CaptureStderr();

    outcome(path("drawing.mp4"));

    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                ContainsRegex("drawing.mp4 cannot be played: it is none of the kinds of video that "
                              "are played \\(.*SVG"));
}

TEST_F(OtherPlaces, OfAReferenceMovieAreNotVisited)
{
    const std::string address = with_places("$NET.mp4") + '\0';
    const std::string data =
        box("rdrf", std::string(4, '\0') + "url " + big_endian(address.size(), 4) + address);
    write_file(path("reference.mp4"), box("ftyp", "qt  " + std::string(4, '\0') + "qt  ") +
                                          box("moov", box("rmra", box("rmda", data))));

    EXPECT_THAT(outcome(path("reference.mp4")), ElementsAre(StartsWith("error")));

    EXPECT_THAT(visited(), IsEmpty());
}

TEST_F(OtherPlaces, OfATrackWhosePicturesLieElsewhereAreNotVisited)
{
    std::string contents = read_file(clip("a.mp4"));
    const size_t entry = contents.find("url ", contents.find("dref"));
    ASSERT_NE(entry, std::string::npos);
    const std::string address = with_places("file://$FILE") + '\0';
    // The index lies behind the pictures: what comes into it moves none of them.
    ASSERT_GT(contents.find("moov"), contents.find("mdat"));
    contents.insert(entry + 8, address);
    contents[entry + 7] = 0; // not in this file
    const auto grow = [&](size_t name) {
        uint32_t size = 0;
        for (size_t i = name - 4; i < name; i++)
            size = size << 8 | static_cast<unsigned char>(contents[i]);
        contents.replace(name - 4, 4, big_endian(size + address.size(), 4));
    };
    for (const char *around : {"moov", "trak", "mdia", "minf", "dinf", "dref", "url "})
        grow(contents.rfind(around, entry));
    write_file(path("elsewhere.mp4"), contents);

    EXPECT_THAT(outcome(path("elsewhere.mp4")), Not(ElementsAre("nothing")));

    EXPECT_THAT(visited(), IsEmpty());
}

TEST_F(OtherPlaces, OfAFilmThatGoesOnInAnotherFileAreNotVisited)
{
    std::string contents = read_file(clip("a.mkv"));
    const std::string info = "\x15\x49\xa9\x66";
    size_t place = contents.find(info);
    while (place != std::string::npos && contents[place - 1] == '\x84') // there it is only named
        place = contents.find(info, place + 1);
    ASSERT_NE(place, std::string::npos);
    const auto first = static_cast<unsigned char>(contents[place + info.size()]);
    ASSERT_NE(first, 0);
    const int size_bytes = __builtin_clz(first) - 23;
    uint64_t size = first & (0x7fu >> (size_bytes - 1));
    for (int i = 1; i < size_bytes; i++)
        size = size << 8 | static_cast<unsigned char>(contents[place + info.size() + i]);
    const std::string name = path("beside/film.mkv");
    const std::string next =
        "\x3e\x83\xbb" + big_endian(0x4000 | name.size(), 2) + name; // the next file's name
    // The list of places at the beginning of the file is wrong after this; it is a mere help.
    contents.replace(place + info.size(), static_cast<size_t>(size_bytes),
                     '\x01' + big_endian(size + next.size(), 7) + next);
    write_file(path("linked.mkv"), contents);

    EXPECT_THAT(outcome(path("linked.mkv")), ElementsAre("prepared", "completed"));

    EXPECT_THAT(visited(), IsEmpty());
}

TEST_F(OtherPlaces, OfASubtitleAreNotVisited)
{
    const Lure subtitles[] = {
        {"a.ass",
         "[Script Info]\nScriptType: v4.00+\n[V4+ Styles]\nFormat: Name, Fontname, "
         "Fontsize\nStyle: Default,$LETTERS,20\n[Fonts]\nfontname: $LETTERS\n[Events]\n"
         "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\n"
         "Dialogue: 0,0:00:00.10,0:00:01.90,Default,,0,0,0,,{\\fn$LETTERS}here"
         "{\\fn@$LETTERS} and there\n"},
        {"a.srt", "1\n00:00:00,100 --> 00:00:01,900\n<font face=\"$LETTERS\">here</font> "
                  "<img src=\"$NET.png\">\n"},
        {"a.smi", "<SAMI><HEAD><LINK REL=stylesheet HREF=\"$NET.css\"></HEAD><BODY><SYNC Start=100>"
                  "<P Class=ENCC><FONT FACE=\"$LETTERS\">here</FONT><IMG SRC=\"$NET.png\">"
                  "<SYNC Start=1900><P Class=ENCC>&nbsp;</BODY></SAMI>\n"},
        {"a.ttxt", "<?xml version=\"1.0\"?>\n<!DOCTYPE TextStream SYSTEM \"file://$FILE\" "
                   "[<!ENTITY there SYSTEM \"file://$FILE\">]>\n<TextStream version=\"1.1\">"
                   "<TextSample sampleTime=\"00:00:00.100\">here &there;</TextSample>"
                   "<TextSample sampleTime=\"00:00:01.900\"></TextSample></TextStream>\n"},
        {"a.sub", "# VobSub index file, v7\nsize: 720x576\nid: en, index: 0\n"
                  "timestamp: 00:00:00:100, filepos: 000000000\n"
                  "{1}{1}25.000\n{3}{50}{f:$LETTERS}here\n"},
    };
    const std::string film = clip("a.mp4");
    for (const Lure &subtitle : subtitles) {
        SCOPED_TRACE(subtitle.file);
        write_file(path(subtitle.file), with_places(subtitle.text));
        make_player();
        const size_t before = events().size();
        ASSERT_EQ(player_->set_subtitle_path(path(subtitle.file)), PLAYER_ERROR_NONE);
        ASSERT_TRUE(playing(film));

        ASSERT_TRUE(wait_for([&] { return events().size() > before + 1; }));
        EXPECT_THAT(events()[before + 1], HasSubstr("here"));
        player_->destroy();

        EXPECT_THAT(visited(), IsEmpty());
    }
}

TEST_F(OtherPlaces, AnAddressIsTheNameOfAFile)
{
    EXPECT_THAT(outcome(with_places("$NET.mp4")), ElementsAre("error -2"));
    EXPECT_THAT(visited(), IsEmpty());
}

TEST_F(OtherPlaces, AFolderMayBeNamedLikeAProtocol)
{
    std::filesystem::create_directories(path("http:/host"));
    clip("http:/host/a.mp4");
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder_);

    EXPECT_THAT(outcome("http://host/a.mp4"), ElementsAre("prepared", "completed"));

    std::filesystem::current_path(before);
}

TEST_F(OtherPlaces, WhatIsRefusedIsStillRefusedOnceItIsLoaded)
{
    platform::ElementPtr drawer = platform::make_element("rsvgdec");
    ASSERT_TRUE(drawer);
    GstElementFactory *factory = gst_element_get_factory(drawer.get());

    EXPECT_EQ(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(factory)), guint{GST_RANK_NONE});
}

TEST_F(OtherPlaces, AFilmPlaysWithoutTheSubtitlesThatLieInIt)
{
    write_file(path("a.srt"), "1\n00:00:00,100 --> 00:00:00,900\nHello\n");
    run_ffmpeg("-i " + clip("a.mkv") + " -i " + path("a.srt") +
               " -map 0 -map 1 -map 1 -c copy "
               "-c:s:0 srt -c:s:1 ass " +
               path("b.mkv"));
    testing::internal::CaptureStderr();

    EXPECT_THAT(outcome(path("b.mkv")), ElementsAre("prepared", "completed"));

    EXPECT_THAT(testing::internal::GetCapturedStderr(), Not(HasSubstr("decoder")));
}

} // namespace
} // namespace player_test
