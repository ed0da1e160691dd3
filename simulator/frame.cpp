#include "frame.h"

namespace bmcsim {

constexpr uint8_t ESCAPE_BIT = 0x10;
constexpr size_t MIN_MESSAGE = 4; // sequence, netFn/lun, command, checksum

static void takeMessage(const Bytes& body, const FrameSink& sink) {
    if (body.size() < MIN_MESSAGE) {
        sink.garbage(format("a message of %zu bytes", body.size()));
        return;
    }
    uint8_t sum = 0;
    for (const uint8_t byte : body)
        sum = static_cast<uint8_t>(sum + byte);
    if (sum != 0) {
        sink.garbage("a message with a bad checksum");
        return;
    }
    Message message;
    message.sequence = body[0];
    message.netFn = static_cast<uint8_t>(body[1] >> 2);
    message.lun = body[1] & 3;
    message.cmd = body[2];
    message.data.assign(body.begin() + 3, body.end() - 1);
    sink.message(message);
}

static void endFrame(FrameReader& reader, uint8_t end, const FrameSink& sink) {
    FrameReader done;
    std::swap(done, reader);
    if (done.overlong)
        sink.garbage(format("a frame of more than %zu bytes", MAX_FRAME));
    else if (done.escaped)
        sink.garbage("a frame that ends in an escape");
    else if (done.body.empty())
        return;
    else if (end == FRAME_CONTROL_END)
        sink.control(done.body);
    else
        takeMessage(done.body, sink);
}

void feedFrames(FrameReader& reader, const uint8_t* bytes, size_t size, const FrameSink& sink) {
    for (size_t i = 0; i < size; i++) {
        uint8_t byte = bytes[i];
        if (byte == FRAME_MESSAGE_END || byte == FRAME_CONTROL_END) {
            endFrame(reader, byte, sink);
            continue;
        }
        if (byte == FRAME_ESCAPE) {
            reader.escaped = true;
            continue;
        }
        if (reader.escaped)
            byte = static_cast<uint8_t>(byte & ~ESCAPE_BIT);
        reader.escaped = false;
        if (reader.body.size() < MAX_FRAME)
            reader.body.push_back(byte);
        else
            reader.overlong = true;
    }
}

static void appendEscaped(Bytes& wire, uint8_t byte) {
    if (byte == FRAME_MESSAGE_END || byte == FRAME_CONTROL_END || byte == FRAME_ESCAPE) {
        wire.push_back(FRAME_ESCAPE);
        byte |= ESCAPE_BIT;
    }
    wire.push_back(byte);
}

Bytes encodeMessage(const Message& message, uint8_t checksumError) {
    Bytes body = {message.sequence, static_cast<uint8_t>(message.netFn << 2 | (message.lun & 3)),
                  message.cmd};
    body.insert(body.end(), message.data.begin(), message.data.end());
    uint8_t sum = 0;
    for (const uint8_t byte : body)
        sum = static_cast<uint8_t>(sum + byte);
    body.push_back(static_cast<uint8_t>(checksumError - sum));
    Bytes wire;
    for (const uint8_t byte : body)
        appendEscaped(wire, byte);
    wire.push_back(FRAME_MESSAGE_END);
    return wire;
}

Bytes encodeControl(const Bytes& control) {
    Bytes wire;
    for (const uint8_t byte : control)
        appendEscaped(wire, byte);
    wire.push_back(FRAME_CONTROL_END);
    return wire;
}

} // namespace bmcsim
