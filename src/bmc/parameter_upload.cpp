#include "bmc/parameter_upload.h"

#include "bmc/request.h"
#include "config/logs.h"
#include "state/schedule.h"
#include "text.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <optional>

namespace {

constexpr std::size_t CHUNK_VALUE_SIZE = 32;
constexpr BYTE EMPTY_VALUE_INDEX = 255;

std::atomic<unsigned long> untaken{0};

// The only thread whose uploads still count, once reserveUploads was called. Guarded by cmd_lock.
std::optional<pthread_t> owner;

struct chunk_builder {
    BYTE bytes[100] = {};
    int length = 0;

    void add(std::size_t byte) {
        bytes[length++] = static_cast<BYTE>(byte);
    }
    void addDigits(std::size_t number) { // two, the low one first
        add(number % COUNT_BASE);
        add(number / COUNT_BASE);
    }
};

bool hasIndexByte(BYTE parm) {
    return parm == PARM_COMMAND || parm == PARM_COMMAND_RESULT;
}

BYTE sendLocked(const BYTE* chunk, int length) {
    if (owner.has_value() && pthread_equal(*owner, pthread_self()) == 0)
        return 0;
    return askBmc(NETFN_APP, CMD_SET_SYSTEM_INFO_PARAMS, chunk, static_cast<std::size_t>(length))
        .code;
}

void reportRefusal(BYTE parm, BYTE code) {
    std::printf("cCode : %d\n", code);
    printIntLog("cCode ->", code);
    printErrIntLog("ipmi command fail cCode->", code);
    printErrIntLog("ipmi command fail, parameter->", parm);
}

void uploadValue(BYTE parm, std::string_view value) {
    const scoped_lock guard(cmd_lock);
    BYTE index = EMPTY_VALUE_INDEX;
    if (hasIndexByte(parm) && !value.empty()) {
        index = static_cast<BYTE>(value.front() - '0');
        value.remove_prefix(1);
    }
    std::size_t offset = 0;
    bool taken = !bmcAway();
    while (!bmcAway() && (offset == 0 || offset < value.size())) {
        // an empty value is one chunk, which clears the parameter
        const std::string_view piece = value.substr(offset, CHUNK_VALUE_SIZE);
        chunk_builder chunk;
        chunk.add(parm);
        chunk.add(0x10);
        chunk.addDigits(value.size());
        chunk.addDigits(offset);
        chunk.add(piece.size());
        if (hasIndexByte(parm))
            chunk.add(index);
        for (const char c : piece)
            chunk.add(static_cast<BYTE>(c));
        const BYTE code = sendLocked(chunk.bytes, chunk.length);
        if (code != 0)
            reportRefusal(parm, code);
        taken = taken && code == 0;
        offset += CHUNK_VALUE_SIZE;
    }
    untaken += taken ? 0 : 1;
}

} // namespace

void ipmiCmdSet(BYTE parm, std::string_view buffer) {
    uploadValue(parm, buffer.substr(0, buffer.find('\0')));
}

void ipmiCmdSet(BYTE parm, const std::array<BYTE, 2>& count) {
    const char bytes[2] = {static_cast<char>(count[0]), static_cast<char>(count[1])};
    uploadValue(parm, std::string_view(bytes, sizeof bytes));
}

unsigned long untakenValues() {
    return untaken;
}

BYTE sendChunk(const BYTE* chunk, int length) {
    const scoped_lock guard(cmd_lock);
    return sendLocked(chunk, length);
}

void reserveUploads() {
    const scoped_lock guard(cmd_lock);
    owner = pthread_self();
}
