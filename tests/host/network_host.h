// A recorded host with stand-ins for the network tools, a BMC and private logs.
#pragma once

#include "fake_bmc.h"
#include "recorded_host.h"
#include "sandbox.h"

#include <gtest/gtest.h>

class NetworkHost : public testing::Test {
  protected:
    NetworkHost() {
        host.toolByArgument("ifconfig");
        host.toolByArgument("pciconf");
        host.tool("netstat", "exec cat \"$VYN_SIM_HOST/netstat\"");
        host.tool("hostname", "echo host1");
        host.tool("cat", "[ \"$1\" != /etc/resolv.conf ] || set -- \"$VYN_SIM_HOST/resolv.conf\"\n"
                         "exec /bin/cat \"$@\"");
        host.file("addresses.txt", "");
        host.file("netstat", "");
        host.file("resolv.conf", "");
    }

    void SetUp() override {
        if (!sandboxed)
            GTEST_SKIP() << SANDBOX_DENIED;
    }

    std::vector<std::string> values(int selector) const {
        std::vector<std::string> found;
        for (const FakeBmc::Upload& upload : bmc.uploads())
            if (upload.selector == selector)
                found.push_back(upload.value);
        return found;
    }

    template <class Call>
    static std::string printed(Call call) {
        testing::internal::CaptureStdout();
        call();
        return testing::internal::GetCapturedStdout();
    }

    const bool sandboxed = enterSandbox();
    recorded_host host;
    FakeBmc bmc;
};

using Texts = std::vector<std::string>;
