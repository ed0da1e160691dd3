// The byte protocol of QEMU's external BMC (hw/ipmi/ipmi_bmc_extern.c): messages and control
// commands on one byte stream.
//
//   message:  sequence | netFn << 2 | lun | command | data... | checksum | A0
//   control:  code | data... | A1
//   A0, A1 and AA inside either are sent as AA followed by the byte with bit 4 set.
//   All bytes of a message, checksum included, add up to 0 modulo 256.
#pragma once

#include "core.h"

namespace bmcsim {

constexpr uint8_t FRAME_MESSAGE_END = 0xA0;
constexpr uint8_t FRAME_CONTROL_END = 0xA1;
constexpr size_t MAX_FRAME = 1024; // unescaped bytes; a longer frame is dropped whole

struct Message {
    uint8_t sequence = 0;
    uint8_t netFn = 0;
    uint8_t lun = 0;
    uint8_t cmd = 0;
    Bytes data; // of a response: completion code first
};

// What a byte stream turned out to hold: one of the three.
struct Frame {
    std::optional<Message> message;
    Bytes control;
    std::string garbage; // why a frame was dropped
};

struct FrameReader {
    Bytes body;
    bool escaped = false;
    bool overlong = false;
};

// Takes the next bytes of the stream, in pieces of any size. Returns every frame that ends among
// them, but for empty ones.
std::vector<Frame> feedFrames(FrameReader& reader, const uint8_t* bytes, size_t size);

// The bytes on the wire. `checksumError` is added to the checksum.
Bytes encodeMessage(const Message& message, uint8_t checksumError = 0);
Bytes encodeControl(const Bytes& control);
// What a new client is sent: a lone end mark, which flushes what a dead predecessor left half-sent,
// and the protocol's version.
Bytes encodeHello();

} // namespace bmcsim
