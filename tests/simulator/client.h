// A client of the simulated BMC inside the test process, and the requests tests send most.
#pragma once

#include "simulator/control.h"

#include <string>

namespace bmcsim {

inline Bytes bytesOf(const std::string& text) {
    return Bytes(text.begin(), text.end());
}

inline Bytes hex(const std::string& text) {
    Bytes bytes;
    parseHex(text, bytes);
    return bytes;
}

struct Bench {
    Bmc bmc;
    Session session;

    Bench() {
        session = newSession(bmc);
        session.strict = true; // a client that has just started
    }
    // Completion code and data; empty for silence.
    Bytes send(uint8_t netFn, uint8_t cmd, const Bytes& data = {}) {
        return send(session, netFn, cmd, data);
    }
    Bytes send(Session& from, uint8_t netFn, uint8_t cmd, const Bytes& data) {
        const Message request = {0x11, netFn, 0, cmd, data};
        const Wire wire = handleRequest(bmc, from, request);
        Bytes answer;
        FrameReader reader;
        const FrameSink sink = {[&](const Message& message) { answer = message.data; },
                                [](const Bytes&) {}, [](const std::string&) {}};
        feedFrames(reader, wire.bytes.data(), wire.bytes.size(), sink);
        return answer;
    }
    // A whole value in chunks of 32; index below 0 for selectors without one.
    void upload(uint8_t selector, const std::string& value, int index = -1) {
        upload(session, selector, value, index);
    }
    void upload(Session& from, uint8_t selector, const std::string& value, int index = -1) {
        size_t offset = 0;
        do {
            const std::string part = value.substr(offset, 32);
            Bytes data = {selector,
                          0x10,
                          static_cast<uint8_t>(value.size() % 255),
                          static_cast<uint8_t>(value.size() / 255),
                          static_cast<uint8_t>(offset % 255),
                          static_cast<uint8_t>(offset / 255),
                          static_cast<uint8_t>(part.size())};
            if (index >= 0)
                data.push_back(static_cast<uint8_t>(index));
            data.insert(data.end(), part.begin(), part.end());
            send(from, 0x06, 0x58, data);
            offset += 32;
        } while (offset < value.size());
    }
    void count(uint8_t selector, size_t number) {
        upload(selector, {static_cast<char>(number % 255), static_cast<char>(number / 255)});
    }
    // The reply of a control command; errors begin with "error: ".
    std::string command(const std::string& line) {
        const Outcome outcome = runCommand(bmc, line);
        std::string reply;
        for (const std::string& text : outcome.lines)
            reply += text + "\n";
        return outcome.error.empty() ? reply : "error: " + outcome.error;
    }
    // All complaints so far, which are forgotten.
    std::string complaints() {
        std::string all;
        for (const std::string& complaint : bmc.ledger.complaints)
            all += complaint + "\n";
        command("complaints clear");
        return all;
    }
};

} // namespace bmcsim
