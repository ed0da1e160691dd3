#include "nvme/device.h"

#include "bytes.h"
#include "config/logs.h"
#include "platform/platform.h"
#include "state/flags.h"
#include "system_info.h"
#include "tools/program.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <err.h>

namespace {

constexpr const char* NVME_PREFIX = "nvme";
constexpr std::size_t PATH_SIZE = 64;

int openFailed(int error, int exit_on_error) {
    if (exit_on_error != 0)
        endProcess(1);
    return error;
}

bool readPage(int fd, std::uint8_t opcode, std::uint32_t nsid, std::uint32_t cdw10,
              std::uint8_t* page, std::uint32_t size, const char* what) {
    platform::nvme_pt_command pt;
    pt.cmd[CMD_OPC] = opcode;
    putLittleEndian(&pt.cmd[CMD_NSID], nsid);
    putLittleEndian(&pt.cmd[CMD_CDW10], cdw10);
    pt.buf = page;
    pt.len = size;
    pt.is_read = 1;
    std::memset(page, 0, size);

    if (platform::nvme_passthrough(fd, pt) < 0) {
        warn("%s request failed", what);
        return false;
    }
    if ((littleEndian<std::uint16_t>(&pt.cpl[CPL_STATUS]) & CPL_STATUS_ERROR_BITS) != 0) {
        warnx("%s request returned error", what);
        return false;
    }
    return true;
}

} // namespace

std::vector<std::string> listControllers() {
    std::vector<std::string> names;
    const std::size_t prefix = std::strlen(NVME_PREFIX);
    for (const std::string& name : tools.list_folder("/dev"))
        if (name.rfind(NVME_PREFIX, 0) == 0 && name.size() > prefix &&
            name.find_first_not_of("0123456789", prefix) == std::string::npos)
            names.push_back(name);
    return names;
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

nvme_controller::nvme_controller(const std::string& name) {
    open_dev(name.c_str(), m_fd, 1, 0);
}

nvme_controller::~nvme_controller() {
    if (isOpen())
        platform::nvme_close(m_fd);
}

bool read_controller_data(int fd, nvme_controller_data& cdata) {
    return readPage(fd, NVME_OPC_IDENTIFY, 0, IDENTIFY_CONTROLLER, cdata.data(), IDENTIFY_SIZE,
                    "identify");
}

bool read_namespace_data(int fd, std::uint32_t nsid, nvme_namespace_data& nsdata) {
    return readPage(fd, NVME_OPC_IDENTIFY, nsid, IDENTIFY_NAMESPACE, nsdata.data(), IDENTIFY_SIZE,
                    "identify");
}

bool read_logpage(int fd, std::uint8_t log_page, std::uint32_t nsid, std::uint8_t* payload,
                  std::uint32_t payload_size) {
    const std::uint32_t dwords = payload_size / 4;
    return readPage(fd, NVME_OPC_GET_LOG_PAGE, nsid, (dwords - 1) << 16 | log_page, payload,
                    payload_size, "get log page");
}

void deviceFailed(const char* label, const std::string& name) {
    if (!belongsToService())
        endProcess(1);
    printErrLog(label, name + " does not answer");
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
