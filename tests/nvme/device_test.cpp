#include "nvme/device.h"
#include "nvme_pages.h"

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

TEST(NvmeDevice, FailedCommandsEndTheProcess) {
    const std::pair<std::string, const char*> cases[] = {
        {"controller.fail", "identify request failed: Input/output error"},
        {"namespace1.status", "identify request returned error"},
        {"health.status", "get log page request returned error"},
        {"health.fail", "get log page request failed: Input/output error"},
    };
    for (const auto& [file, message] : cases) {
        const recorded_host host;
        addDevice(host, "nvme0");
        host.file("nvme0/" + file, "5");
        int fd = -1;
        ASSERT_EQ(0, open_dev("nvme0", fd, 0, 0));
        nvme_controller_data page;
        const auto readAll = [&] {
            read_controller_data(fd, page);
            read_namespace_data(fd, 1, page);
            read_logpage(fd, 2, 0xFFFFFFFF, page.data(), 512);
        };
        EXPECT_EXIT(readAll(), testing::ExitedWithCode(1), message) << file;
    }
}

} // namespace
