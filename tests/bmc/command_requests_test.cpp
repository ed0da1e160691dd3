#include "bmc/command_requests.h"

#include "bmc/command_fetch.h"
#include "bmc/restart_monitor.h"
#include "bmc/watchdog.h"
#include "bmc_test.h"
#include "config/configuration.h"
#include "recorded_host.h"

#include <algorithm>

namespace {

using std::literals::string_literals::operator""s;
using Upload = FakeBmc::Upload;

TEST(CommandTextTest, Parsing) {
    const auto complete = command_parse::complete;
    struct {
        std::string text;
        command_parse parsed;
        std::string key;
        int option, value;
    } const cases[] = {
        {"", command_parse::no_key_or_flag, "", 0, 0},
        {"no separator", command_parse::no_key_or_flag, "", 0, 0},
        {"x;abc", command_parse::no_key_or_flag, "", 0, 0},
        {"x;abc;", command_parse::no_option, "", 0, 0},
        {";;\x01", complete, "", 1, 0},
        {"x;abc;\x02\x5A", complete, "abc", 2, 90},
        {"x;abc;\x02", complete, "abc", 2, 0},
        {"x;abc;\x03\x07", complete, "abc", 3, 0},
        {"x;abc;\x08\xFFtail", complete, "abc", 8, 255},
        {"x;abc;\0"s, complete, "abc", 0, 0},
        {"x;abc;;\x01", complete, "abc", ';', 0},
        {std::string(2000, 'x') + ";k;\x07\x3B", complete, "k", 7, ';'},
    };
    for (const auto& c : cases) {
        command_request request{"old", 9, 9};
        EXPECT_EQ(parseCommandRequest(c.text, request), c.parsed) << c.text;
        EXPECT_EQ(request.key, c.key) << c.text;
        EXPECT_EQ(request.option, c.option) << c.text;
        EXPECT_EQ(request.value, c.value) << c.text;
    }
}

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

class CommandTest : public BmcTest {
  protected:
    // The BMC holds `text` until it is released.
    void post(const std::string& text, std::uint8_t index = 0) {
        slot = text;
        bmc->forget();
        bmc->handle(0x06, 0x59, [this, index](const auto& request) {
            if (released())
                return chunk(0, 0, 0, 0, "");
            const unsigned offset = request.data.at(5) + 255U * request.data.at(6);
            const std::string piece = slot.substr(offset, request.data.at(7));
            return chunk(static_cast<unsigned>(slot.size()), offset,
                         static_cast<unsigned>(piece.size()), index, piece);
        });
    }
    static bool isRelease(const Upload& upload) { // a text of the index alone
        return upload.selector == 207 && upload.index != 255 &&
               upload.value.find(';') == std::string::npos;
    }
    bool released() const {
        const auto uploads = bmc->uploads();
        return std::any_of(uploads.begin(), uploads.end(), isRelease);
    }
    // Runs the thread until the request is released; its waits are cut short.
    void serve() {
        runUntil(command_request_handler, command_request_condition, command_request_lock, [&] {
            wakeUp(command_request_condition, command_request_lock);
            return released();
        });
    }
    // What 207 and 208 were given, up to the release.
    std::vector<Upload> slots() const {
        std::vector<Upload> values;
        for (const Upload& upload : bmc->uploads())
            if (upload.selector == 207 || upload.selector == 208)
                values.push_back(upload);
        const auto release = std::find_if(values.begin(), values.end(), isRelease);
        if (release != values.end())
            values.erase(release + 1, values.end());
        return values;
    }

    std::string slot;
};

TEST_F(CommandTest, FetchingInChunks) {
    std::string text(9000, 'a');
    std::generate(text.begin(), text.end(), [n = 0]() mutable { return char('a' + n++ % 26); });
    for (const std::size_t size : {0U, 1U, 32U, 40U, 300U, 1023U, 1024U, 5000U, 9000U}) {
        post(text.substr(0, size), 7);
        const fetched_command command = fetchCommand();
        EXPECT_TRUE(command.complete);
        EXPECT_EQ(command.text, text.substr(0, std::min<std::size_t>(size, 1023))) << size;
        EXPECT_EQ(bmc->sent(0x06, 0x59).size(), std::max<std::size_t>(1, (size + 31) / 32));
    }
    EXPECT_EQ(bmc->sent(0x06, 0x59)[0], Bytes({0x10, 0xCF, 0, 0, 0, 0, 0, 32}));
    EXPECT_EQ(bmc->sent(0x06, 0x59)[9], Bytes({0x10, 0xCF, 0, 7, 0, 33, 1, 32}));   // offset 288
    EXPECT_EQ(bmc->sent(0x06, 0x59)[255], Bytes({0x10, 0xCF, 0, 7, 0, 0, 32, 32})); // offset 8160
}

TEST_F(CommandTest, AnIncoherentFetchIsOnlyReleased) {
    const std::string first = "x;abc;\x03" + std::string(25, 'y');
    const std::string length = "Command request command error   invalid data length";
    struct {
        const char* name;
        std::vector<Bytes> answers;
        bool released;
        std::string line;
    } const cases[] = {
        {"refused", {{0xC1}}, false, "get command request command fail, cCode->  193"},
        {"no bytes though owed", {chunk(7, 0, 0, 0, "")}, false, length},
        {"longer than the total", {chunk(7, 0, 8, 1, "x;abc;\x03z")}, true, length},
        {"offset beyond the total", {chunk(7, 9, 7, 1, "x;abc;\x03")}, true, length},
        {"fewer bytes than told", {chunk(7, 0, 7, 1, "x;abc;")}, true, length},
        {"second refused",
         {chunk(40, 0, 32, 1, first), {0x80}},
         true,
         "get command request command fail, cCode->  128"},
        {"second empty", {chunk(40, 0, 32, 1, first), chunk(40, 32, 0, 1, "")}, true, length},
        {"second cut", {chunk(40, 0, 32, 1, first), {0x00}}, true, length},
        {"second repeats", {chunk(64, 0, 32, 1, first), chunk(64, 0, 32, 1, first)}, true, length},
        {"total shrinks",
         {chunk(64, 0, 32, 1, first), chunk(40, 32, 8, 1, "12345678")},
         true,
         length},
    };
    std::size_t lines = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        post("");
        bmc->queue(0x06, 0x59, c.answers);
        runUntil(command_request_handler, command_request_condition, command_request_lock, [&] {
            wakeUp(command_request_condition, command_request_lock);
            return bmc->sent(0x06, 0x59).size() > c.answers.size();
        });
        const auto log = datedLog("err");
        ASSERT_EQ(log.size(), ++lines);
        EXPECT_EQ(log.back(), c.line);
        const auto uploads = bmc->uploads();
        EXPECT_EQ(uploads[0], (Upload{208, 0, ""}));
        EXPECT_EQ(uploads[1], c.released ? (Upload{207, 1, ""}) : (Upload{208, 0, ""}));
        EXPECT_EQ(std::count(uploads.begin(), uploads.end(), Upload{207, 1, ""}), c.released);
    }
    // Garbage in front of the separators is a request too, but not one to carry out.
    post("a text without separators", 2);
    serve();
    EXPECT_EQ(slots(), (std::vector<Upload>{{208, 0, ""}, {207, 2, ""}}));
    EXPECT_EQ(datedLog("err").back(), "Command Request  no key or flag");
}

TEST_F(CommandTest, EveryOption) {
    const recorded_host host;
    std::string controller(4096, '\0');
    controller.replace(4, 20, "SN0123              ");
    host.file("dev/nvme0", "");
    host.file("nvme0/controller.bin", controller);
    bmc->handle(0x30, 0x70, [](const auto& request) {
        if (request.data != Bytes{0x6C, 0, 0, 5, 1, 0, 0, 25})
            return Bytes{0x00, 0, 0, 0, 0, 0, 0, 0};
        const std::string serial = "SN0123              ";
        Bytes response(7, 0);
        response.insert(response.end(), serial.begin(), serial.end());
        return response;
    });
    updateSec = 10;
    initIni();
    const auto located = [this](std::uint8_t index) {
        return bmc->sent(0x30, 0x70).back() == Bytes{0x6C, 0x01, 0, 5, index, 0};
    };
    struct {
        std::string option, result;
        std::function<bool()> holds;
    } const cases[] = {
        {"\x01\x01", "1", [] { return mStatus == 0 && getCurPauseFlag() == 1; }},
        {"\x01\x02", "1", [] { return mStatus == 1 && getPauseFlag() == 0; }},
        {"\x02\x5A", "1",
         [] {
             return updateSec == 60 &&
                    fileText(ini_file).find("updateFreq = 60;") != std::string::npos;
         }},
        {"\x02", "1", [] { return updateSec == 1; }},
        {"\x04", "1", [this] { return bmc->requests().back().cmd != 0x70; }},
        {"\x05", "1", [] { return static_flag == 1; }},
        {"\x07"s + '\0', "1", [&] { return located(0); }},
        {"\x08"s + '\0', "1", [&] { return located(1); }},
        {"\x06", "0", [] { return true; }},
        {"\0"s, "0", [] { return true; }},
        {"\xFF", "0", [] { return true; }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.option[0]));
        post("x;abc;" + c.option, 3);
        serve();
        EXPECT_EQ(
            slots(),
            (std::vector<Upload>{
                {208, 0, ""}, {207, 3, "2;"}, {208, 3, "abc;" + c.result + ";;"}, {207, 3, ""}}));
        EXPECT_TRUE(c.holds());
    }
    const std::string unsupported = "Command Request  not support command request";
    EXPECT_EQ(datedLog("err"), (Lines{"Command Request option fail->  6", unsupported,
                                      "Command Request option fail->  0", unsupported,
                                      "Command Request option fail->  255", unsupported}));
    post("x;abc;\x03", 12); // only the first digit fits the index byte
    serve();
    EXPECT_EQ(slots(), (std::vector<Upload>{{208, 0, ""},
                                            {207, 1, "22;"},
                                            {207, 255, ""},
                                            {208, 255, ""},
                                            {208, 1, "2abc;1;;"},
                                            {207, 1, "2"}}));
}

// Changes the pause as another process does: through attachments of its own.
struct command_line_process {
    shm* pause_handle = nullptr;
    shm* cur_pause_handle = nullptr;

    void pause(int value) {
        pause_handle = setSharedMemory(pause_key, value, pause_handle);
        if (value == 1)
            cur_pause_handle = setSharedMemory(cur_pause_key, value, cur_pause_handle);
    }
    ~command_line_process() {
        delete pause_handle;
        delete cur_pause_handle;
    }
};

TEST_F(CommandTest, AResumeAndAStopWakeWhoeverWaits) {
    command_line_process command_line;
    watchdogResetFreq = WATCHDOG_RESET_FREQ_ABSENT;
    command_line.pause(1);
    post("");
    std::thread commands(command_request_handler, nullptr);
    std::thread paused(bmc_restart_monitor_handler, nullptr);
    std::thread watchdog(watchdog_reset_handler, nullptr);
    const auto asked = [&] { return bmc->sent(0x30, 0x70).size(); };
    const auto hurry = [&] { wakeUp(command_request_condition, command_request_lock); };
    EXPECT_TRUE(bmc->waitUntil([&] { return bmc->sent(0x30, 0xB6).size() == 3; }));
    EXPECT_EQ(asked(), 0U);
    command_line.pause(0);
    EXPECT_TRUE(bmc->waitUntil([&] { return hurry(), asked() == 1; }));
    EXPECT_EQ(getCurPauseFlag(), 0);

    command_line.pause(1);
    wakeUp(bmc_restart_monitor_condition, bmc_restart_monitor_lock); // into the pause
    setStopFlag(1);
    hurry();
    commands.join();
    paused.join();
    watchdog.join();
    EXPECT_EQ(getPauseFlag(), 0);
}

} // namespace
