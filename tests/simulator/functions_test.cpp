#include "client.h"

#include "simulator/show.h"

#include <gtest/gtest.h>

using namespace bmcsim;

namespace {

TEST(BmcsimSel, EventsInWords) {
    const struct {
        const char* event;
        const char* words;
        bool complaint;
    } events[] = {
        {"41 04 0D FF 70 A1 13 FF", "sensor FF  drive 19    asserted    drive fault", false},
        {"41 04 0D FF F0 A0 03 FF", "drive 3     deasserted  drive missing", false},
        {"41 04 0D 5F 70 A2 07 42", "sensor 5F  C1E2S7      asserted    predictive", false},
        {"41 04 0D 5F F0 A7 03 3C", "C0E60S3     deasserted  rebuild in progress", false},
        {"41 04 D0 FF 6F A1 02 FF", "network interface 2  link up", false},
        {"41 04 D0 FF 6F A2 02 FF", "network interface 2  link down", false},
        {"41 04 0D FF 70 A4 02 FF", "condition A4", true},
        {"41 04 0D FF 71 A1 02 FF", "unknown direction", true},
        {"41 04 0D FE 70 A1 02 FF", "sensor FE", true},
        {"41 04 0D FF 70 A1 02 00", "drive fault", true},
        {"41 04 D0 FF 6F A3 02 FF", "unknown change", true},
        {"42 04 D0 FF 6F A1 02 FF", "link up", true},
        {"41 03 D0 FF 6F A1 02 FF", "link up", true},
        {"20 04 07 11 6F 01 FF FF", "record ", false}, // somebody else's
    };
    for (const auto& row : events) {
        SCOPED_TRACE(row.event);
        Bench bench;
        EXPECT_EQ(bench.send(0x04, 0x02, hex(row.event)), Bytes{CC_OK});
        ASSERT_EQ(selLines(bench.bmc).size(), 1U);
        EXPECT_NE(selLines(bench.bmc)[0].find(row.words), std::string::npos)
            << selLines(bench.bmc)[0];
        EXPECT_EQ(!bench.complaints().empty(), row.complaint);
    }
    Bench bench;
    EXPECT_EQ(bench.send(0x04, 0x02, hex("41 04 0D FF 70 A1 13")), Bytes{CC_LENGTH_INVALID});
}

// What an ordinary client does: info, reserve, walk the entries, clear.
TEST(BmcsimSel, AnOrdinaryClientReadsAndClears) {
    Bench bench;
    bench.command("clock 1700000000");
    bench.command("capacity 3");
    EXPECT_EQ(bench.send(0x0A, 0x43, hex("00 00 00 00 00 FF")), Bytes{CC_NOT_PRESENT});
    for (const char* event : {"41 04 D0 FF 6F A1 01 FF", "41 04 D0 FF 6F A1 02 FF"})
        bench.send(0x04, 0x02, hex(event));
    bench.bmc.ledger.nowMs += 2500; // the clock goes on
    EXPECT_EQ(bench.send(0x0A, 0x44, hex("00 00 02 00 00 00 00 41 00 04 07 01 6F 01 02 03")),
              hex("00 03 00"));
    EXPECT_EQ(bench.send(0x04, 0x02, hex("41 04 D0 FF 6F A1 03 FF")), Bytes{CC_OUT_OF_SPACE});
    const Bytes info = bench.send(0x0A, 0x40);
    ASSERT_EQ(info.size(), 15U);
    EXPECT_EQ(littleEndian(info, 2, 2), 3U);
    EXPECT_EQ(littleEndian(info, 4, 2), 0U);
    EXPECT_EQ(littleEndian(info, 6, 4), 1700000002U);
    EXPECT_EQ(info[14], 0x8B); // overflow
    EXPECT_EQ(bench.send(0x0A, 0x48), hex("00 02 F1 53 65"));

    EXPECT_EQ(bench.send(0x0A, 0x43, hex("00 00 00 00 00 FF")),
              hex("00 02 00 01 00 02 00 F1 53 65 41 00 04 D0 FF 6F A1 01 FF"));
    EXPECT_EQ(bench.send(0x0A, 0x43, hex("00 00 FF FF 00 FF")),
              hex("00 FF FF 03 00 02 02 F1 53 65 41 00 04 07 01 6F 01 02 03"));
    const Bytes reservation = bench.send(0x0A, 0x42);
    ASSERT_EQ(reservation.size(), 3U);
    Bytes part = {reservation[1], reservation[2], 0x02, 0x00, 0x0A, 0x03};
    EXPECT_EQ(bench.send(0x0A, 0x43, part), hex("00 03 00 D0 FF 6F"));
    part[0] ^= 1;
    EXPECT_EQ(bench.send(0x0A, 0x43, part), Bytes{CC_RESERVATION_LOST});

    Bytes clear = {reservation[1], reservation[2], 'C', 'L', 'R', 0xAA};
    clear[0] ^= 1;
    EXPECT_EQ(bench.send(0x0A, 0x47, clear), Bytes{CC_RESERVATION_LOST});
    clear[0] ^= 1;
    clear[4] = 'X';
    EXPECT_EQ(bench.send(0x0A, 0x47, clear), Bytes{CC_INVALID_FIELD});
    clear[4] = 'R';
    EXPECT_EQ(bench.send(0x0A, 0x47, clear), hex("00 01"));
    EXPECT_TRUE(selLines(bench.bmc).empty());
    EXPECT_EQ(bench.send(0x0A, 0x49, hex("78 56 34 12")), Bytes{CC_OK});
    EXPECT_EQ(bench.send(0x0A, 0x48), hex("00 78 56 34 12"));
}

TEST(BmcsimFunctions, WhatIsNotThereAnswersInvalidCommand) {
    Bench bench;
    EXPECT_EQ(bench.send(0x06, 0x01)[5], 0x02);
    bench.command("ipmi 1.5");
    EXPECT_EQ(bench.send(0x06, 0x01)[5], 0x51);
    bench.command("watchdog none");
    const struct {
        uint8_t netFn, cmd;
        const char* data;
    } requests[] = {{0x2C, 0x00, "00"}, {0x00, 0x01, ""},   {0x06, 0x7E, ""}, {0x04, 0x10, ""},
                    {0x0A, 0x99, ""},   {0x30, 0xB6, "02"}, {0x30, 0x33, ""}, {0x3F, 0xFF, ""}};
    for (const auto& request : requests)
        EXPECT_EQ(bench.send(request.netFn, request.cmd, hex(request.data)),
                  Bytes{CC_INVALID_COMMAND});
}

TEST(BmcsimFiles, ADownloadFromPrepareToDone) {
    Bench bench;
    EXPECT_EQ(bench.send(0x30, 0xA0, hex("05 0B")), Bytes{CC_NOT_PRESENT});
    bench.command("drivemap S1234567890=3 WDABCDEFGHIJKLMNOPQRSTU=258");
    bench.command("file 0B preparing 2");
    const Bytes prepared = bench.send(0x30, 0xA0, hex("05 0B"));
    ASSERT_EQ(prepared.size(), 3U);
    const Bytes rid = {prepared[1], prepared[2]};
    const auto request = [&](uint8_t step, const char* rest) {
        Bytes data = {step, rid[0], rid[1]};
        for (const uint8_t byte : hex(rest))
            data.push_back(byte);
        return bench.send(0x30, 0xA0, data);
    };
    EXPECT_EQ(request(0x06, ""), hex("00 01"));
    EXPECT_EQ(request(0x06, ""), hex("00 01"));
    EXPECT_EQ(request(0x06, ""), hex("00 00 E8 00 00 00"));
    EXPECT_EQ(request(0x07, "00 00 00 00 10 00"), hex("00 00000000000000 02 00 00000000000000"));
    EXPECT_EQ(request(0x07, "2C 00 00 00 02 00"), hex("00 03 00")); // slot of the first
    const Bytes serial = request(0x07, "C7 00 00 00 15 00");        // serial of the second
    EXPECT_EQ(std::string(serial.begin() + 1, serial.end()), "WDABCDEFGHIJKLMNOPQRS");
    EXPECT_EQ(bench.complaints(), "");
    EXPECT_EQ(request(0x07, "E8 00 00 00 01 00"), Bytes{CC_OUT_OF_RANGE});
    EXPECT_NE(bench.complaints().find("1 bytes at offset 232 of 232"), std::string::npos);
    EXPECT_EQ(request(0x08, ""), Bytes{CC_OK});
    EXPECT_EQ(bench.complaints(), "");
    EXPECT_EQ(request(0x08, ""), Bytes{CC_RESERVATION_LOST});
    EXPECT_NE(bench.complaints(), "");
    bench.command("file 0B length 4294967295");
    bench.command("file 0B preparing 0");
    const Bytes again = bench.send(0x30, 0xA0, hex("05 0B"));
    EXPECT_EQ(bench.send(0x30, 0xA0, {0x06, again[1], again[2]}), hex("00 00 FF FF FF FF"));
}

TEST(BmcsimWatchdog, CountsDownAndExpires) {
    Bench bench;
    const auto state = [&](const char* text) {
        return bench.command("show watchdog").find(text) != std::string::npos;
    };
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("01")), Bytes{CC_WRONG_STATE});
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("02"))[1], 0);
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("03 3C 00")), Bytes{CC_OK});
    bench.bmc.ledger.nowMs += 59000;
    EXPECT_TRUE(state("running, 1 of 60 seconds left"));
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("01")), Bytes{CC_OK});
    bench.bmc.ledger.nowMs += 59999;
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("02"))[1], 1);
    bench.bmc.ledger.nowMs += 1;
    EXPECT_TRUE(state("expired"));
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("02"))[1], 0);
    EXPECT_TRUE(state("enabled 1, reset 1, expired 1"));
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("03 3C 00")), Bytes{CC_OK});
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("03 00 00")), Bytes{CC_OK});
    EXPECT_TRUE(state("stopped") || state("expired"));
    EXPECT_EQ(bench.send(0x30, 0xB3, hex("02")), Bytes{CC_INVALID_COMMAND});
    bench.command("watchdog b3");
    EXPECT_EQ(bench.send(0x30, 0xB3, hex("02"))[0], CC_OK);
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("02")), Bytes{CC_INVALID_COMMAND});
}

TEST(BmcsimPanel, PositionsLedsAndRestartFlag) {
    Bench bench;
    bench.command("nvme 1 2 5 S3EVNX0K123456");
    Bytes drive(6, 0);
    for (const char letter : std::string("S3EVNX0K123456      "))
        drive.push_back(static_cast<uint8_t>(letter));
    drive.insert(drive.begin(), CC_OK);
    EXPECT_EQ(bench.send(0x30, 0x70, hex("6C 00 01 05 01 02 00 19")), drive);
    Bytes empty(27, 0);
    EXPECT_EQ(bench.send(0x30, 0x70, hex("6C 00 01 04 01 02 00 19")), empty);
    EXPECT_EQ(bench.send(0x30, 0x70, hex("6C 01 01 05 01 02")), Bytes{CC_OK});
    EXPECT_EQ(bench.bmc.panel.bays.begin()->second.led, 1);
    EXPECT_EQ(bench.complaints(), "");
    for (const char* wrong : {"6C 00 02 05 01 02 00 19", "6C 00 01 18 01 02 00 19",
                              "6C 00 01 05 01 08 00 19", "6C 01 01 04 01 02"}) {
        EXPECT_EQ(bench.send(0x30, 0x70, hex(wrong)), Bytes{CC_INVALID_FIELD});
        EXPECT_NE(bench.complaints(), "") << wrong;
    }
    EXPECT_EQ(bench.send(0x30, 0x70, hex("A9 00")), hex("00 00"));
    EXPECT_EQ(bench.send(0x30, 0x70, hex("A9 01")), hex("00"));
    EXPECT_EQ(bench.send(0x30, 0x70, hex("A9 00")), hex("00 01"));
    bench.upload(192, "FreeBSD;");
    bench.send(0x30, 0xB6, hex("03 3C 00"));
    bench.send(0x04, 0x02, hex("41 04 D0 FF 6F A1 01 FF"));
    bench.command("restart");
    EXPECT_EQ(bench.send(0x30, 0x70, hex("A9 00")), hex("00 00"));
    EXPECT_EQ(bench.command("raw 192"), "");
    EXPECT_EQ(bench.send(0x30, 0xB6, hex("02"))[1], 0);
    EXPECT_EQ(bench.bmc.panel.bays.begin()->second.led, -1);
    EXPECT_EQ(selLines(bench.bmc).size(), 1U); // the log outlives a restart
}

} // namespace
