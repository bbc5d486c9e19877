#include "fake_sound_server.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

// The numbers and tags of the protocol, in its version 12, which has no property lists.
enum Command : uint32_t {
    ERROR = 0,
    REPLY = 2,
    AUTH = 8,
    SET_CLIENT_NAME = 9,
    GET_SERVER_INFO = 20,
    GET_SINK_INFO = 21,
    GET_SINK_INPUT_INFO_LIST = 30,
    SET_DEFAULT_SINK = 44,
    MOVE_SINK_INPUT = 67,
};
constexpr uint32_t VERSION = 12;
constexpr uint32_t NO_SUCH_ENTITY = 5;
constexpr uint32_t ACCESS_DENIED = 1;
constexpr size_t HEADER_SIZE = 20;

std::string raw(uint32_t number)
{
    const uint32_t big_endian = htonl(number);
    return std::string(reinterpret_cast<const char *>(&big_endian), sizeof big_endian);
}

std::string u32(uint32_t number)
{
    return "L" + raw(number);
}

std::string usec(uint32_t microseconds)
{
    return "U" + raw(0) + raw(microseconds);
}

std::string text(const std::string &value)
{
    return "t" + value + std::string(1, '\0');
}

// 16 bits, two channels, 48 kHz, full volume.
std::string sample_spec()
{
    return std::string("a\x03\x02", 3) + raw(48000);
}

std::string channel_map()
{
    return std::string("m\x02\x01\x02", 4);
}

std::string volume()
{
    return std::string("v\x02", 2) + raw(0x10000) + raw(0x10000);
}

// Reads the parts of a request one after the other.
class Request {
  public:
    explicit Request(const std::string &bytes) : bytes_(bytes) {}

    uint32_t u32()
    {
        ++at_;
        uint32_t number = 0;
        if (at_ + sizeof number <= bytes_.size())
            std::memcpy(&number, bytes_.data() + at_, sizeof number);
        at_ += sizeof number;
        return ntohl(number);
    }

    std::string text()
    {
        if (at_ >= bytes_.size() || bytes_[at_++] != 't')
            return {};
        const std::string value = bytes_.c_str() + at_;
        at_ += value.size() + 1;
        return value;
    }

  private:
    const std::string &bytes_;
    size_t at_ = 0;
};

bool receive(int socket, int stop, char *data, size_t size)
{
    for (size_t done = 0; done < size;) {
        pollfd descriptors[2] = {{socket, POLLIN, 0}, {stop, POLLIN, 0}};
        poll(descriptors, 2, -1);
        if (descriptors[1].revents != 0)
            return false;
        const ssize_t length = recv(socket, data + done, size - done, 0);
        if (length <= 0)
            return false;
        done += static_cast<size_t>(length);
    }
    return true;
}

} // namespace

FakeSoundServer::FakeSoundServer(const std::string &path, State state) : state_(std::move(state))
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (bind(listener_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
        listen(listener_, 4) != 0 || pipe(stop_) != 0)
        std::abort();
    thread_ = std::thread([this] { serve(); });
}

FakeSoundServer::~FakeSoundServer()
{
    close(stop_[1]);
    thread_.join();
    close(stop_[0]);
    close(listener_);
}

FakeSoundServer::State FakeSoundServer::state()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

void FakeSoundServer::change(const std::function<void(State &)> &change)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    change(state_);
}

void FakeSoundServer::serve()
{
    for (;;) {
        pollfd descriptors[2] = {{listener_, POLLIN, 0}, {stop_[0], POLLIN, 0}};
        poll(descriptors, 2, -1);
        if (descriptors[1].revents != 0)
            return;
        const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0)
            return;
        change([](State &state) { ++state.clients; });
        serve_client(client);
        close(client);
    }
}

// A message is a header of five numbers, the first of which is the length, and a request.
void FakeSoundServer::serve_client(int socket)
{
    char header[HEADER_SIZE];
    while (receive(socket, stop_[0], header, sizeof header)) {
        uint32_t length = 0;
        std::memcpy(&length, header, sizeof length);
        std::string request(ntohl(length), '\0');
        if (!receive(socket, stop_[0], request.data(), request.size()))
            return;
        if (state().silent)
            continue;
        const std::string reply = answer(request);
        const std::string message = raw(static_cast<uint32_t>(reply.size())) + raw(0xFFFFFFFF) +
                                    raw(0) + raw(0) + raw(0) + reply;
        if (send(socket, message.data(), message.size(), MSG_NOSIGNAL) < 0)
            return;
    }
}

std::string FakeSoundServer::answer(const std::string &bytes)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Request request(bytes);
    const uint32_t command = request.u32();
    const uint32_t tag = request.u32();
    const std::string reply = u32(REPLY) + u32(tag);
    const auto error = [tag](uint32_t code) { return u32(ERROR) + u32(tag) + u32(code); };
    const auto is_sink = [this](const std::string &name) {
        return std::find(state_.sinks.begin(), state_.sinks.end(), name) != state_.sinks.end();
    };

    switch (command) {
    case AUTH:
        return reply + u32(VERSION);
    case SET_CLIENT_NAME:
        return reply;
    case GET_SERVER_INFO:
        return reply + text("fake") + text("1") + text("user") + text("host") + sample_spec() +
               text(state_.default_sink) + text("source") + u32(0);
    case GET_SINK_INFO: {
        request.u32();
        const std::string name = request.text();
        return is_sink(name) ? reply + sink_info(name) : error(NO_SUCH_ENTITY);
    }
    case GET_SINK_INPUT_INFO_LIST:
        return reply + stream_list();
    case SET_DEFAULT_SINK: {
        const std::string name = request.text();
        if (state_.refuse_default || !is_sink(name))
            return error(ACCESS_DENIED);
        state_.default_sink = name;
        return reply;
    }
    case MOVE_SINK_INPUT: {
        state_.silent = state_.silent_after_a_move;
        const uint32_t stream = request.u32();
        request.u32();
        const std::string name = request.text();
        const auto &tied = state_.tied_streams;
        if (std::find(tied.begin(), tied.end(), stream) != tied.end() || !is_sink(name))
            return error(NO_SUCH_ENTITY);
        state_.streams[stream] = name;
        return reply;
    }
    default:
        return error(NO_SUCH_ENTITY);
    }
}

std::string FakeSoundServer::sink_info(const std::string &name)
{
    return u32(0) + text(name) + text("A sink") + sample_spec() + channel_map() + u32(0) +
           volume() + "0" + u32(0) + text("monitor") + usec(0) + text("driver") + u32(0);
}

std::string FakeSoundServer::stream_list()
{
    std::string list;
    for (const auto &[number, sink] : state_.streams)
        list += u32(number) + text("stream") + u32(0) + u32(0) + u32(0) + sample_spec() +
                channel_map() + volume() + usec(0) + usec(0) + text("none") + text("driver") + "0";
    return list;
}
