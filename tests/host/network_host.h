// A recorded host whose programs and files answer inside the test process, a BMC and private logs.
#pragma once

#include "config/configuration.h"
#include "fake_bmc.h"
#include "recorded_host.h"
#include "sandbox.h"
#include "tools/ask.h"

#include <gtest/gtest.h>

using Texts = std::vector<std::string>;

class NetworkHost : public testing::Test {
  protected:
    NetworkHost() {
        tools.run = [](const command_line& words, const program_limits&) {
            asked.push_back(words.front() + " " + words.back());
            return answers[asked.back()]; // of a missing program, unless something is said
        };
        tools.read_file = [](const char*) { return std::optional<std::string>(resolv_conf); };
        host.file("addresses.txt", "");
        host.file("hostname.txt", "host1");
    }
    ~NetworkHost() override {
        tools = {};
    }
    void SetUp() override {
        static_first_init = nicStatusSel = 1;
        if (!sandboxed)
            GTEST_SKIP() << SANDBOX_DENIED;
    }
    static void says(const std::string& program, const std::string& text) {
        answers[program] = {program_end::exited, 0, text};
    }
    static std::string block(const std::string& name, const std::string& lines) {
        return name + ": flags=8843<UP,BROADCAST> metric 0 mtu 1500\n" + lines;
    }
    Texts values(int selector) const {
        Texts found;
        for (const FakeBmc::Upload& upload : bmc.uploads())
            if (upload.selector == selector)
                found.push_back(upload.value);
        return found;
    }
    // The link events sent, each as "up 1 " or "down 1 ".
    std::string events() const {
        std::string found;
        for (const Bytes& sent : bmc.sent(0x04, 0x02)) {
            EXPECT_EQ(sent, (Bytes{0x41, 0x04, 0xD0, 0xFF, 0x6F, sent.at(5), sent.at(6), 0xFF}));
            found += (sent[5] == 0xA1 ? "up " : "down ") + std::to_string(sent[6]) + " ";
        }
        return found;
    }
    // What a cycle of this collector alone prints.
    template <class Call>
    std::string printed(Call call) {
        beginAskingCycle();
        bmc.forget();
        testing::internal::CaptureStdout();
        call();
        return testing::internal::GetCapturedStdout();
    }

    const bool sandboxed = enterSandbox();
    recorded_host host;
    FakeBmc bmc;
    // By the program and the last word of its command line.
    static inline std::map<std::string, program_answer> answers;
    static inline Texts asked;
    static inline std::string resolv_conf;
};
