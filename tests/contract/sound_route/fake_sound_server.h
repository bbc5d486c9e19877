/**
 * A sound server without sound: it speaks as much of the PulseAudio protocol, over a real socket
 * and to the real client library, as switching sinks takes. A thread of its own serves one client
 * after the other.
 */
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

class FakeSoundServer {
  public:
    /** What the server knows, and what it does. */
    struct State {
        std::vector<std::string> sinks;
        std::string default_sink;
        std::map<uint32_t, std::string> streams; ///< number -> name of the sink it plays on
        std::vector<uint32_t> tied_streams;      ///< streams that refuse to move
        bool silent = false;                     ///< takes connections but answers nothing
        bool silent_after_a_move = false;        ///< answers nothing once a stream has moved
        bool refuse_default = false;             ///< does not let the default sink be changed
        int clients = 0;                         ///< connections so far
    };

    /** @param path of the socket */
    FakeSoundServer(const std::string &path, State state);
    ~FakeSoundServer();
    FakeSoundServer(const FakeSoundServer &) = delete;
    FakeSoundServer &operator=(const FakeSoundServer &) = delete;

    State state();
    void change(const std::function<void(State &)> &change);

  private:
    void serve();
    void serve_client(int socket);
    std::string answer(const std::string &request);
    std::string sink_info(const std::string &name);
    std::string stream_list();

    std::mutex mutex_;
    State state_;
    int listener_ = -1;
    int stop_[2] = {-1, -1};
    std::thread thread_;
};
