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
    const struct {
        const char *file, *text;
        std::uint32_t nsid, size; // of the namespace and of the log page
        const char* message;
    } cases[] = {
        {"controller.fail", "", 1, 512, "identify request failed: Input/output error"},
        {"namespace1.status", "0x0B", 1, 512, "identify request returned error"},
        {"health.status", "0x100", 1, 512, "get log page request returned error"},
        {"health.fail", "6", 1, 512, "get log page request failed: No such device or address"},
        {"none", "", 2, 512, "wrong command: opc 0x06 nsid 0x2 "},
        {"none", "", 1, 256, "wrong command: opc 0x02 nsid 0xffffffff cdw10 0x003f0002 len 256"},
    };
    for (const auto& c : cases) {
        const recorded_host host;
        addDevice(host, "nvme0");
        host.file(std::string("nvme0/") + c.file, c.text);
        int fd = -1;
        ASSERT_EQ(0, open_dev("nvme0", fd, 0, 0));
        nvme_controller_data page;
        const auto readAll = [&] {
            read_controller_data(fd, page);
            read_namespace_data(fd, c.nsid, page);
            read_logpage(fd, 2, 0xFFFFFFFF, page.data(), c.size);
        };
        EXPECT_EXIT(readAll(), testing::ExitedWithCode(1), c.message) << c.file;
    }
}

TEST(NvmeDevice, SectorSize) {
    for (const auto& [lbads, size] :
         {std::pair{0U, 1U}, {12, 4096}, {31, 1U << 31}, {32, 0}, {255, 0}}) {
        nvme_namespace_data page;
        const std::string text = namespacePage(1, lbads);
        std::copy(text.begin(), text.end(), page.begin());
        EXPECT_EQ(size, ns_get_sector_size(page)) << lbads;
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
        {"    ", 30, ""},
        {"ABCDEF", 4, "ABC"},
        {"ABCDEF", 0, "untouched"},
    };
    for (const auto& c : cases) {
        char text[32] = "untouched";
        nvme_strvis(text, reinterpret_cast<const std::uint8_t*>(c.field.data()), c.dstlen,
                    static_cast<int>(c.field.size()));
        EXPECT_EQ(c.text, text) << c.field;
    }
}

} // namespace
