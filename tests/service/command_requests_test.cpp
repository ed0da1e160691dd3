#include "service/command_requests.h"

#include "bmc_test.h"

namespace {

using Upload = FakeBmc::Upload;

// One response: total, offset, length and index as told, then text.
Bytes chunk(unsigned total, unsigned offset, unsigned length, std::uint8_t index,
            const std::string& text) {
    Bytes response{0x00, 0x77, 0x77};
    for (const unsigned number : {total, offset})
        for (const unsigned shift : {0U, 8U})
            response.push_back(static_cast<std::uint8_t>(number >> shift));
    response.push_back(static_cast<std::uint8_t>(length));
    response.push_back(index);
    response.insert(response.end(), text.begin(), text.end());
    return response;
}

using CommandTest = BmcTest;

TEST_F(CommandTest, WhatMakesNoSenseIsReleasedAllTheSame) {
    const std::string first = "x;abc;\x03" + std::string(25, 'y');
    struct {
        const char* name;
        std::vector<Bytes> answers;
        bool released;
        std::vector<Upload> carried_out = {};
    } const cases[] = {
        {"no key or flag", {chunk(6, 0, 6, 1, "x;abc;")}, true},
        {"an empty key", {chunk(4, 0, 4, 1, "x;;\x03")}, true},
        {"unknown option",
         {chunk(7, 0, 7, 1, "x;abc;\x06")},
         true,
         {{207, 1, "2;"}, {208, 1, "abc;0;;"}}},
        {"nothing", {{0x00}}, false},
        {"no bytes though owed", {chunk(7, 0, 0, 0, "")}, false},
        {"longer than the total", {chunk(7, 0, 8, 1, "x;abc;\x03z")}, true},
        {"offset beyond the total", {chunk(7, 9, 7, 1, "x;abc;\x03")}, true},
        {"fewer bytes than told", {chunk(7, 0, 7, 1, "x;abc;")}, true},
        {"longer than any", {chunk(2000, 0, 255, 1, std::string(1500, ';'))}, true},
        {"second refused", {chunk(40, 0, 32, 1, first), {0x80}}, true},
        {"second empty", {chunk(40, 0, 32, 1, first), chunk(40, 32, 0, 1, "")}, true},
        {"second repeats", {chunk(64, 0, 32, 1, first), chunk(64, 0, 32, 1, first)}, true},
        {"total shrinks", {chunk(64, 0, 32, 1, first), chunk(40, 32, 8, 1, "12345678")}, true},
    };
    bmc->handle(0x06, 0x58, [](const auto&) { return setStopFlag(1), Bytes{0}; }); // of one round
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        setStopFlag(0);
        bmc->forget();
        bmc->queue(0x06, 0x59, c.answers);
        command_request_handler(nullptr);
        EXPECT_EQ(bmc->sent(0x06, 0x59).size(), c.answers.size());
        std::vector<Upload> uploads = c.carried_out;
        uploads.insert(uploads.begin(), {208, 0, ""});
        if (c.released)
            uploads.push_back({207, 1, ""});
        EXPECT_EQ(bmc->uploads(), uploads);
    }
    Lines lines(13, "Command request command error   invalid data length");
    lines[0] = lines[1] = "Command Request  no key or flag";
    lines[2] = "Command Request option fail->  6";
    lines[3] = "Command Request  not support command request";
    lines[9] = "get command request command fail, cCode->  128";
    EXPECT_EQ(datedLog("err"), lines);
}

} // namespace
