#include "bmc/command_fetch.h"

#include "bmc/parameter_upload.h"
#include "bmc/request.h"
#include "config/logs.h"
#include "state/flags.h"
#include "text.h"

#include <algorithm>

namespace {

constexpr DWORD CHUNK_HEAD_SIZE = 8;

bmc_response requestChunk(const command_fetch& fetch) {
    return askBmc(NETFN_APP, CMD_GET_SYSTEM_INFO_PARAMS,
                  {0x10, PARM_COMMAND, 0x00, fetch.index, 0x00,
                   static_cast<BYTE>(fetch.offset % COUNT_BASE),
                   static_cast<BYTE>(fetch.offset / COUNT_BASE), static_cast<BYTE>(fetch.wanted)});
}

// One request and its chunk; false when the fetch has failed, which is logged.
bool fetchChunk(command_fetch& fetch) {
    const bmc_response response = requestChunk(fetch);
    if (!response.ok()) {
        printErrIntLog("get command request command fail, cCode->", response.code);
        return false;
    }
    if (takeCommandChunk(fetch, decodeCommandChunk(response.data.data(), response.length)))
        return true;
    printErrLog("Command request command error", " invalid data length");
    return false;
}

} // namespace

command_chunk decodeCommandChunk(const BYTE* response, DWORD length) {
    BYTE head[CHUNK_HEAD_SIZE] = {};
    const DWORD head_length = std::min(length, CHUNK_HEAD_SIZE);
    std::copy_n(response, head_length, head);

    command_chunk chunk;
    chunk.total = head[2] | static_cast<unsigned>(head[3]) << 8;
    chunk.offset = head[4] | static_cast<unsigned>(head[5]) << 8;
    chunk.length = head[6];
    chunk.index = head[7];
    chunk.text = std::string_view(reinterpret_cast<const char*>(response) + head_length,
                                  std::min<DWORD>(length - head_length, chunk.length));
    return chunk;
}

bool takeCommandChunk(command_fetch& fetch, const command_chunk& chunk) {
    const bool first = fetch.offset == 0;
    const bool fits = chunk.offset == fetch.offset && chunk.text.size() == chunk.length &&
                      chunk.offset + chunk.length <= chunk.total &&
                      (first || chunk.total == fetch.total);
    // The text of a chunk that does not fit counts too: it shows that there is a request to
    // release.
    if (!chunk.text.empty())
        fetch.index = chunk.index;
    fetch.text.append(chunk.text.substr(0, COMMAND_TEXT_SIZE - fetch.text.size()));
    if (!fits)
        return false;
    fetch.total = chunk.total;
    fetch.offset += chunk.length;
    fetch.wanted = std::min(fetch.total - fetch.offset, COMMAND_FETCH_SIZE);
    return fetch.wanted == 0 || chunk.length != 0;
}

fetched_command fetchCommand() {
    command_fetch fetch;
    bool complete = true;
    // Text beyond what is stored is not worth delaying a stop for.
    while (complete && fetch.wanted > 0)
        complete = fetchChunk(fetch) && (fetch.offset <= COMMAND_TEXT_SIZE || !stopRequested());
    // A slot filled with zeros asks for nothing.
    if (!fetch.text.empty() && fetch.text.front() == '\0')
        fetch.text.clear();
    return {std::move(fetch.text), fetch.index, complete};
}
