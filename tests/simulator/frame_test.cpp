#include "simulator/frame.h"

#include <gtest/gtest.h>

using namespace bmcsim;

namespace {

// What comes of a stream that arrives in pieces: messages, "control" and "garbage".
std::string heard(FrameReader& reader, const Bytes& wire, size_t step) {
    std::string all;
    for (size_t at = 0; at < wire.size(); at += step)
        for (const Frame& frame :
             feedFrames(reader, wire.data() + at, std::min(step, wire.size() - at)))
            all += frame.message           ? hexText(encodeMessage(*frame.message)) + ", "
                   : frame.control.empty() ? "garbage, "
                                           : "control, ";
    return all;
}

// Seen between QEMU 7.2 and other people's BMC simulator, but for the two computed ones.
TEST(BmcsimFrame, GoldenVectorsBothWays) {
    const struct {
        Message message;
        const char* wire;
    } vectors[] = {
        {{0x00, 0x06, 0, 0x01, {}}, "00 18 01 E7 A0"},
        {{0xAA, 0x06, 0, 0x01, {}}, "AA BA 18 01 3D A0"},
        {{0x02, 0x06, 0, 0x30, {0xA0, 0xA1, 0xAA}}, "02 18 30 AA B0 AA B1 AA BA CB A0"},
        {{0x05, 0x07, 0, 0x01, {0, 0, 3, 9, 8, 2, 0x9F, 0x91, 0x12, 0, 2, 0x0F, 0, 0, 0, 0}},
         "05 1C 01 00 00 03 09 08 02 9F 91 12 00 02 0F 00 00 00 00 75 A0"},
        {{0x3D, 0x06, 0, 0x01, {}}, "3D 18 01 AA BA A0"},
        {{0x01, 0x28, 0, 0x01, {}}, "01 AA B0 01 5E A0"},
        {{0x05, 0x07, 1, 0x2E, {0}}, "05 1D 2E 00 B0 A0"},
    };
    for (const auto& vector : vectors) {
        EXPECT_EQ(hexText(encodeMessage(vector.message)), vector.wire);
        FrameReader reader;
        EXPECT_EQ(heard(reader, parseHex(vector.wire).value(), 2), vector.wire + std::string(", "));
    }
    FrameReader reader; // QEMU's hello, then what is wrong beside what is right
    EXPECT_EQ(heard(reader,
                    parseHex("FF 01 A1 08 3F A1 00 18 01 E7 A0 00 18 01 E8 A0 00 18 E8 A0 "
                             "00 18 01 AA A0 00 18 01 E7 A0")
                        .value(),
                    3),
              "control, control, 00 18 01 E7 A0, garbage, garbage, garbage, 00 18 01 E7 A0, ");
    Bytes endless(100000, 0x55);
    endless.push_back(FRAME_MESSAGE_END);
    EXPECT_EQ(heard(reader, endless, 4096), "garbage, ");
}

} // namespace
