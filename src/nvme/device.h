// Access to NVMe controllers through the kernel driver's admin-command passthrough.
//
// A device that fails is told on standard error, in one line: program name, ": ", the message and,
// where the kernel refused, ": " and its error text. A one-shot run then ends with status 1; in the
// service the failure costs what was asked for, and the error log tells.
// Nothing here is shared; any thread may use any device through a descriptor of its own.
#pragma once

#include "nvme/layout.h"

#include <string>
#include <vector>

// The controllers in /dev: the names made of "nvme" and digits, in byte-wise order.
std::vector<std::string> listControllers();

// Opens /dev/NAME read-write and stores the descriptor. Returns 0, 22 (EINVAL) for a name that
// doesn't begin with "nvme", or the error number of the open; a path longer than 63 characters is
// ENAMETOOLONG. `show_error` 1 writes the reason to standard error; `exit_on_error` 1 ends the
// process with status 1 in place of a return.
int open_dev(const char* str, int& fd, int show_error, int exit_on_error);

// An open controller, closed with the object.
class nvme_controller {
  public:
    explicit nvme_controller(const std::string& name);
    ~nvme_controller();
    nvme_controller(const nvme_controller&) = delete;
    nvme_controller& operator=(const nvme_controller&) = delete;

    bool isOpen() const {
        return m_fd >= 0;
    }
    int fd() const {
        return m_fd;
    }

  private:
    int m_fd = -1;
};

// Each fills a page; false when the device failed.
bool read_controller_data(int fd, nvme_controller_data& cdata);
bool read_namespace_data(int fd, std::uint32_t nsid, nvme_namespace_data& nsdata);
// `payload_size` bytes, a multiple of 4.
bool read_logpage(int fd, std::uint8_t log_page, std::uint32_t nsid, std::uint8_t* payload,
                  std::uint32_t payload_size);

// Notes that a device failed: ends a one-shot run; in the service writes `label` and the name with
// "does not answer" to the error log.
void deviceFailed(const char* label, const std::string& name);

// Bytes of a sector in the format in use; 0 when the device names a size of 2^32 or more.
std::uint32_t ns_get_sector_size(const nvme_namespace_data& nsdata);

// Copies a fixed-width text field: without leading blanks, without trailing blanks and zero bytes,
// bytes outside 0x20 to 0x7E as '?', at most dstlen - 1 characters, terminated.
void nvme_strvis(char* dst, const std::uint8_t* src, int dstlen, int srclen);
