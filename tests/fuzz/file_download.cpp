// Both downloads from a BMC whose answers are the input: of each a completion code, a length byte
// and the data. The first byte chooses the file. What the reader needs of the agent stands here, so
// that nothing is written and no BMC is asked.
#include "bmc/file_download.h"

#include "config/logs.h"
#include "fuzz/fuzz_bytes.h"
#include "smipmi.h"

static fuzz_bytes input{};
static int drives_announced = 0;
static int drives_written = 0;

BYTE runIpmiCmd(BYTE, BYTE, BYTE, const BYTE*, int, BYTE* respBuf, DWORD* respLength) {
    *respLength = 0;
    const BYTE code = input.next(TRANSPORT_FAILED);
    const auto data = input.take(std::min<std::size_t>(input.next(0), RESPONSE_SIZE));
    if (code != 0)
        return code;
    std::copy(data.begin(), data.end(), respBuf);
    *respLength = data.size();
    return code;
}

bool transportFailed() {
    return false;
}

void printErrLog(std::string_view, std::string_view) {}

void printHddMappingLog(std::string_view, std::string_view value, int first) {
    if (first == 1)
        drives_announced = std::atoi(std::string(value).c_str());
    else
        require(++drives_written <= drives_announced);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    input = {data, size};
    drives_announced = drives_written = 0;
    const int result = input.next(0) % 2 == 0 ? isSupportedSaveBiosHdd() : isSupportedNVMe();
    require(result == 0 || result == 1);
    return 0;
}
