#include "nvme/device.h"
#include "nvme_pages.h"

#include <cerrno>
#include <gtest/gtest.h>

namespace {

TEST(NvmeDevice, Open) {
    const recorded_host host;
    addDevice(host, "nvme0");
    const std::string long_name = "nvme" + std::string(60, '7');
    const struct {
        std::string name;
        int show_error, result;
        std::string message;
    } cases[] = {
        {"nvme0", 1, 0, ""},
        {"ada0", 1, EINVAL, "unit_tests: controller/namespace ids must begin with 'nvme'\n"},
        {"xnvme0", 0, EINVAL, ""},
        {"nvme9", 0, ENOENT, ""},
        {long_name, 1, ENAMETOOLONG,
         "unit_tests: could not open /dev/" + long_name.substr(0, 58) + ": File name too long\n"},
    };
    for (const auto& c : cases) {
        int fd = -1;
        testing::internal::CaptureStderr();
        EXPECT_EQ(c.result, open_dev(c.name.c_str(), fd, c.show_error, 0)) << c.name;
        EXPECT_EQ(c.message, testing::internal::GetCapturedStderr()) << c.name;
        EXPECT_EQ(c.result == 0, fd >= 0) << c.name;
    }
    int fd = -1;
    EXPECT_EXIT(open_dev("nvme9", fd, 0, 1), testing::ExitedWithCode(1), "^$");
}

TEST(NvmeDevice, FailedCommandsEndTheProcess) {
    const std::pair<std::string, const char*> cases[] = {
        {"controller.fail", "identify request failed: Input/output error"},
        {"namespace1.status", "identify request returned error"}, // a status code
        {"health.status", "get log page request returned error"}, // a status code type
        {"health.fail", "get log page request failed: Input/output error"},
    };
    for (const auto& [file, message] : cases) {
        const recorded_host host;
        addDevice(host, "nvme0");
        host.file("nvme0/" + file, file[0] == 'n'            ? "0x0B"
                                   : file == "health.status" ? "0x100"
                                                             : "");
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

TEST(NvmeDevice, Strvis) {
    using namespace std::string_literals;
    const struct {
        std::string field;
        int dstlen;
        std::string text;
    } cases[] = {
        {"  VY10NX0K123456    ", 30, "VY10NX0K123456"},
        {"A\x01Z\x7F \x80~\xFF"s, 30, "A?Z? ?~?"},
        {"A\0B \0 \0"s, 30, "A?B"},
        {"ABCDEF", 4, "ABC"},
    };
    for (const auto& c : cases) {
        char text[32];
        nvme_strvis(text, reinterpret_cast<const std::uint8_t*>(c.field.data()), c.dstlen,
                    static_cast<int>(c.field.size()));
        EXPECT_EQ(c.text, text) << c.field;
    }
}

} // namespace
