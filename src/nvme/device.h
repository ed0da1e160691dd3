// Access to NVMe controllers through the kernel driver's admin-command passthrough.
//
// A failing command ends the process with status 1, in the daemon too, after one line on standard
// error: program name, ": ", the message and, where the kernel refused, ": " and its error text.
// Nothing here is shared; any thread may use any device through a descriptor of its own.
#pragma once

#include "bytes.h"
#include "nvme/layout.h"

#include <memory>

// Opens /dev/NAME read-write and stores the descriptor, which the caller closes with
// platform::nvme_close. Returns 0, 22 (EINVAL) for a name that doesn't begin with "nvme", or the
// error number of the open; a path longer than 63 characters is ENAMETOOLONG. `show_error` 1 writes
// the reason to standard error; `exit_on_error` 1 ends the process with status 1 in place of a
// return.
int open_dev(const char* str, int& fd, int show_error, int exit_on_error);

void read_controller_data(int fd, nvme_controller_data& cdata);
void read_namespace_data(int fd, std::uint32_t nsid, nvme_namespace_data& nsdata);

// `size` zero bytes; ends the process with status 1 when there is no memory.
std::unique_ptr<std::uint8_t[]> get_log_buffer(std::uint32_t size);

// Reads `payload_size` bytes, a multiple of 4, of a log page.
void read_logpage(int fd, std::uint8_t log_page, std::uint32_t nsid, std::uint8_t* payload,
                  std::uint32_t payload_size);

// Bytes of a sector in the format in use; 0 when the device names a size of 2^32 or more.
std::uint32_t ns_get_sector_size(const nvme_namespace_data& nsdata);

// Copies a fixed-width text field: without leading blanks, without trailing blanks and zero bytes,
// bytes outside 0x20 to 0x7E as '?', at most dstlen - 1 characters, terminated.
void nvme_strvis(char* dst, const std::uint8_t* src, int dstlen, int srclen);
