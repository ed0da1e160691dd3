#include "nvme/device.h"

#include "platform/platform.h"
#include "system_info.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <err.h>
#include <new>

constexpr const char* NVME_PREFIX = "nvme";
constexpr std::size_t PATH_SIZE = 64;

static int openFailed(int error, int exit_on_error) {
    if (exit_on_error != 0)
        endProcess(1);
    return error;
}

int open_dev(const char* str, int& fd, int show_error, int exit_on_error) {
    if (std::strncmp(str, NVME_PREFIX, std::strlen(NVME_PREFIX)) != 0) {
        if (show_error != 0)
            warnx("controller/namespace ids must begin with '%s'", NVME_PREFIX);
        return openFailed(EINVAL, exit_on_error);
    }

    char path[PATH_SIZE];
    const int length = std::snprintf(path, sizeof path, "/dev/%s", str);
    // A name that was cut may be the name of another device.
    if (length >= static_cast<int>(sizeof path)) {
        fd = -1;
        errno = ENAMETOOLONG;
    } else {
        fd = platform::nvme_open(path);
    }
    if (fd < 0) {
        const int error = errno;
        if (show_error != 0)
            warn("could not open %s", path);
        return openFailed(error, exit_on_error);
    }
    return 0;
}

static void readPage(int fd, std::uint8_t opcode, std::uint32_t nsid, std::uint32_t cdw10,
                     std::uint8_t* page, std::uint32_t size, const char* what) {
    platform::nvme_pt_command pt;
    pt.cmd[CMD_OPC] = opcode;
    putLittleEndian(&pt.cmd[CMD_NSID], nsid);
    putLittleEndian(&pt.cmd[CMD_CDW10], cdw10);
    pt.buf = page;
    pt.len = size;
    pt.is_read = 1;

    if (platform::nvme_passthrough(fd, pt) < 0) {
        warn("%s request failed", what);
        endProcess(1);
    }
    if ((littleEndian<std::uint16_t>(&pt.cpl[CPL_STATUS]) & CPL_STATUS_ERROR_BITS) != 0) {
        warnx("%s request returned error", what);
        endProcess(1);
    }
}

void read_controller_data(int fd, nvme_controller_data& cdata) {
    cdata.fill(0);
    readPage(fd, NVME_OPC_IDENTIFY, 0, IDENTIFY_CONTROLLER, cdata.data(), IDENTIFY_SIZE,
             "identify");
}

void read_namespace_data(int fd, std::uint32_t nsid, nvme_namespace_data& nsdata) {
    nsdata.fill(0);
    readPage(fd, NVME_OPC_IDENTIFY, nsid, IDENTIFY_NAMESPACE, nsdata.data(), IDENTIFY_SIZE,
             "identify");
}

std::unique_ptr<std::uint8_t[]> get_log_buffer(std::uint32_t size) {
    std::unique_ptr<std::uint8_t[]> buffer(new (std::nothrow) std::uint8_t[size]());
    if (buffer == nullptr) {
        warnx("unable to malloc %u bytes", size);
        endProcess(1);
    }
    return buffer;
}

void read_logpage(int fd, std::uint8_t log_page, std::uint32_t nsid, std::uint8_t* payload,
                  std::uint32_t payload_size) {
    const std::uint32_t dwords = payload_size / 4;
    readPage(fd, NVME_OPC_GET_LOG_PAGE, nsid, (dwords - 1) << 16 | log_page, payload, payload_size,
             "get log page");
}

std::uint32_t ns_get_sector_size(const nvme_namespace_data& nsdata) {
    const std::size_t format = nsdata[NS_FLBAS] & 0x0F;
    const unsigned lbads = nsdata[NS_LBAF + format * NS_LBAF_SIZE + NS_LBAF_LBADS];
    return lbads < 32 ? std::uint32_t{1} << lbads : 0;
}

void nvme_strvis(char* dst, const std::uint8_t* src, int dstlen, int srclen) {
    while (srclen > 0 && *src == ' ') {
        src++;
        srclen--;
    }
    while (srclen > 0 && (src[srclen - 1] == ' ' || src[srclen - 1] == '\0'))
        srclen--;

    for (; srclen > 0 && dstlen > 1; srclen--, dstlen--, src++)
        *dst++ = *src >= 0x20 && *src <= 0x7E ? static_cast<char>(*src) : '?';
    if (dstlen > 0)
        *dst = '\0';
}
