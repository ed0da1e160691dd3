#include "nvme/device.h"
#include "nvme_pages.h"

#include "fake_bmc.h"
#include "nvme/smart.h"
#include "sandbox.h"
#include "state/flags.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace {

TEST(NvmeDevice, Open) {
    const recorded_host host;
    addDevice(host, "nvme0");
    const std::string long_name = "nvme" + std::string(60, '7');
    const std::pair<std::string, int> cases[] = {
        {"nvme0", 0}, {"xnvme0", EINVAL}, {"nvme9", ENOENT}, {long_name, ENAMETOOLONG}};
    for (const auto& [name, result] : cases) {
        int fd = -1;
        EXPECT_EQ(result, open_dev(name.c_str(), fd, 0, 0)) << name;
        EXPECT_EQ(result == 0, fd >= 0) << name;
    }
}

// What a failed command costs: a one-shot run, or in the service its own record.
TEST(NvmeDevice, FailedCommands) {
    if (!enterSandbox())
        GTEST_SKIP() << SANDBOX_DENIED;
    const std::pair<std::string, const char*> cases[] = {
        {"controller.fail", "identify request failed: Input/output error"},
        {"namespace1.status", "identify request returned error"},
        {"health.status", "get log page request returned error"},
        {"health.fail", "get log page request failed: Input/output error"},
    };
    for (const auto& [file, message] : cases) {
        const recorded_host host;
        FakeBmc bmc;
        addDevice(host, "nvme0");
        addDevice(host, "nvme1");
        host.file("nvme0/" + file, "5");
        const dev_listing listing({"nvme0", "nvme1", "nvme2"});
        EXPECT_EXIT(getNVMeSMARTInfo(), testing::ExitedWithCode(1), message) << file;
        bmc.forget();
        setStopFlag(0);
        testing::internal::CaptureStderr();
        getNVMeSMARTInfo();
        EXPECT_NE(testing::internal::GetCapturedStderr().find(message), std::string::npos) << file;
        const auto uploads = bmc.uploads();
        ASSERT_EQ(3U, uploads.size());
        EXPECT_EQ(0U, uploads[2].value.find("00:nvme1;"));
        EXPECT_EQ(datedLog("err").back(), "NVME Storage items ->  nvme2 does not answer");
        stop_shm.reset();
    }
}

} // namespace
