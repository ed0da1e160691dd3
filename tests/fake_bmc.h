// A BMC inside the test process, for unit tests over the simulated platform.
//
//     FakeBmc bmc;                                       // listens, sets VYN_SIM_BMC
//     bmc.answer(0x30, 0xB6, {0x00, 0x01});              // always: completion code, then data
//     bmc.queue(0x30, 0xA0, {{0x00, 7, 0}, {0xC1}});     // these first, one each
//     bmc.handle(0x06, 0x59, [](const auto& r) { ... }); // computed from the request
//     ... code under test ...
//     EXPECT_EQ(bmc.sent(0x30, 0xB6), ...);
//
// It shares no code with the agent's encoding of requests. It serves one connection after
// another on a thread of its own; every member may be called from any thread. Construct it
// before the first request of the process, since the agent keeps its connection.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <ostream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

class FakeBmc {
  public:
    struct Request {
        std::uint8_t netFn = 0;
        std::uint8_t cmd = 0;
        Bytes data;
    };

    // One value of Set System Info Parameters, put together from its chunks. `index` is the index
    // byte of selectors 207 and 208, else -1.
    struct Upload {
        int selector = 0;
        int index = -1;
        std::string value;
        bool operator==(const Upload& other) const {
            return selector == other.selector && index == other.index && value == other.value;
        }
        friend std::ostream& operator<<(std::ostream& out, const Upload& upload) {
            return out << upload.selector << '[' << upload.index << "] \"" << upload.value << '"';
        }
    };

    // Completion code, then data. An empty one is no answer: the connection is dropped, which makes
    // the request fail.
    using Handler = std::function<Bytes(const Request&)>;

    FakeBmc();
    ~FakeBmc();
    FakeBmc(const FakeBmc&) = delete;
    FakeBmc& operator=(const FakeBmc&) = delete;

    // What a command is answered with: first the queued answers, then the handler or the fixed
    // answer. Without either: Get Device ID tells an IPMI 2.0 BMC, uploads (0x06/0x58) and
    // platform events (0x04/0x02) succeed, anything else is completion code 0xC1.
    void answer(std::uint8_t netFn, std::uint8_t cmd, Bytes response);
    void queue(std::uint8_t netFn, std::uint8_t cmd, std::vector<Bytes> responses);
    void handle(std::uint8_t netFn, std::uint8_t cmd, Handler handler);

    // Everything received so far, in order; Get Device ID and PICMG (NetFn 0x2C), which the
    // request channel sends on its own, only with `detection`.
    std::vector<Request> requests(bool detection = false) const;
    // The request data of one command, in order.
    std::vector<Bytes> sent(std::uint8_t netFn, std::uint8_t cmd) const;
    // The whole values uploaded, in the order in which their first chunks came. A chunk whose
    // length, total or offset does not fit is an upload with selector -1 and the reason.
    std::vector<Upload> uploads() const;
    void forget(); // what was received so far

    // Blocks until the condition holds, looked at after every answer. False after `seconds`.
    bool waitUntil(const std::function<bool()>& condition, int seconds = 20);

    const std::string& path() const {
        return m_path;
    }

  private:
    using Key = std::pair<std::uint8_t, std::uint8_t>;

    void serve();
    void converse(int fd);
    Bytes respond(const Request& request);
    bool consume(int fd, Bytes& message);

    std::string m_folder, m_path;
    int m_listener = -1;
    int m_stop[2] = {-1, -1};
    std::thread m_thread;
    mutable std::mutex m_mutex;
    std::condition_variable m_answered;
    std::map<Key, std::deque<Bytes>> m_queues;
    std::map<Key, std::shared_ptr<Handler>> m_handlers; // shared, so that state in one lasts
    std::vector<Request> m_requests;
};
