// A BMC behind a driver inside the test process, in place of the platform's driver. Its reading of
// uploads is the BMC simulator's, which shares no code with the agent. It answers in the thread
// that asks, and has no lock of its own. One at a time.
#pragma once

#include "simulator/frame.h"

#include <deque>
#include <functional>
#include <map>
#include <ostream>

using Bytes = bmcsim::Bytes;

class FakeBmc {
  public:
    using Request = bmcsim::Message;

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

    // Completion code, then data.
    using Handler = std::function<Bytes(const Request&)>;

    FakeBmc(); // whatever BMC this process knew before is forgotten
    ~FakeBmc();
    FakeBmc(const FakeBmc&) = delete;
    FakeBmc& operator=(const FakeBmc&) = delete;

    // What a command is answered with: first the queued answers, then the handler or the fixed
    // answer. Without either: Get Device ID tells an IPMI 2.0 BMC, uploads (0x06/0x58) and
    // platform events (0x04/0x02) succeed, anything else is completion code 0xC1.
    void answer(std::uint8_t netFn, std::uint8_t cmd, Bytes response);
    void queue(std::uint8_t netFn, std::uint8_t cmd, std::vector<Bytes> responses);
    void handle(std::uint8_t netFn, std::uint8_t cmd, Handler handler);

    // The request data of one command received so far, in order.
    std::vector<Bytes> sent(std::uint8_t netFn, std::uint8_t cmd) const;
    // The whole values uploaded, in order. A chunk that does not fit is an upload with selector -1.
    std::vector<Upload> uploads() const;
    void forget(); // what was received so far

    Bytes respond(const Request& request);
    int interruptions = 0; // of the waits for an answer, still to come

  private:
    struct Answers {
        std::deque<Bytes> first;
        Handler usual;
    };
    std::map<std::pair<std::uint8_t, std::uint8_t>, Answers> m_answers; // by NetFn and command
    std::vector<Request> m_requests;
};
