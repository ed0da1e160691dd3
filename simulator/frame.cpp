#include "frame.h"

#include <numeric>

namespace bmcsim {

namespace {

constexpr uint8_t ESCAPE = 0xAA;
constexpr uint8_t ESCAPE_BIT = 0x10;
constexpr size_t MIN_MESSAGE = 4; // sequence, netFn/lun, command, checksum

uint8_t sumOf(const Bytes& body) {
    return static_cast<uint8_t>(std::accumulate(body.begin(), body.end(), 0U));
}

Frame messageFrame(const Bytes& body) {
    if (body.size() < MIN_MESSAGE)
        return {{}, {}, format("a message of %zu bytes", body.size())};
    if (sumOf(body) != 0)
        return {{}, {}, "a message with a bad checksum"};
    return {Message{body[0], static_cast<uint8_t>(body[1] >> 2), static_cast<uint8_t>(body[1] & 3),
                    body[2], Bytes(body.begin() + 3, body.end() - 1)},
            {},
            ""};
}

Frame endFrame(const FrameReader& done, uint8_t end) {
    if (done.overlong)
        return {{}, {}, format("a frame of more than %zu bytes", MAX_FRAME)};
    if (done.escaped)
        return {{}, {}, "a frame that ends in an escape"};
    if (end == FRAME_CONTROL_END)
        return {{}, done.body, ""};
    return messageFrame(done.body);
}

void feedByte(FrameReader& reader, uint8_t byte) {
    if (byte == ESCAPE) {
        reader.escaped = true;
        return;
    }
    if (reader.escaped)
        byte = static_cast<uint8_t>(byte & ~ESCAPE_BIT);
    reader.escaped = false;
    if (reader.body.size() < MAX_FRAME)
        reader.body.push_back(byte);
    else
        reader.overlong = true;
}

Bytes escaped(const Bytes& body, uint8_t end) {
    Bytes wire;
    for (const uint8_t byte : body) {
        const bool escape =
            byte == FRAME_MESSAGE_END || byte == FRAME_CONTROL_END || byte == ESCAPE;
        if (escape)
            wire.push_back(ESCAPE);
        wire.push_back(escape ? byte | ESCAPE_BIT : byte);
    }
    wire.push_back(end);
    return wire;
}

} // namespace

std::vector<Frame> feedFrames(FrameReader& reader, const uint8_t* bytes, size_t size) {
    std::vector<Frame> frames;
    for (size_t i = 0; i < size; i++) {
        if (bytes[i] != FRAME_MESSAGE_END && bytes[i] != FRAME_CONTROL_END) {
            feedByte(reader, bytes[i]);
            continue;
        }
        if (reader.overlong || reader.escaped || !reader.body.empty())
            frames.push_back(endFrame(reader, bytes[i]));
        reader = FrameReader();
    }
    return frames;
}

Bytes encodeMessage(const Message& message, uint8_t checksumError) {
    Bytes body = {message.sequence, static_cast<uint8_t>(message.netFn << 2 | (message.lun & 3)),
                  message.cmd};
    body.insert(body.end(), message.data.begin(), message.data.end());
    body.push_back(static_cast<uint8_t>(checksumError - sumOf(body)));
    return escaped(body, FRAME_MESSAGE_END);
}

Bytes encodeControl(const Bytes& control) {
    return escaped(control, FRAME_CONTROL_END);
}

Bytes encodeHello() {
    return {FRAME_MESSAGE_END, 0xFF, 0x01, FRAME_CONTROL_END};
}

} // namespace bmcsim
