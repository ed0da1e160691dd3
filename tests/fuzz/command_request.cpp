// The BMC's command text: first as the chunks of a fetch (a length byte and a response each), then
// as the text that the parser gets.
#include "bmc/command_fetch.h"
#include "fuzz/fuzz_bytes.h"
#include "service/command_requests.h"

#include <vector>

static void parse(std::string_view text) {
    const auto request = parseCommandRequest(text);
    require(!request.has_value() || (request->key.find(';') == std::string::npos &&
                                     request->key.size() + 3 <= text.size()));
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    parse({reinterpret_cast<const char*>(data), size});

    fuzz_bytes input{data, size};
    command_fetch fetch;
    while (fetch.wanted > 0 && input.left > 0) {
        const auto bytes = input.take(input.next(0));
        const std::vector<BYTE> response(bytes.begin(), bytes.end());
        const unsigned before = fetch.offset;
        if (!takeCommandChunk(fetch, decodeCommandChunk(response.data(), response.size())))
            break;
        require(fetch.wanted <= COMMAND_FETCH_SIZE && fetch.offset <= fetch.total);
        require(fetch.wanted == 0 || fetch.offset > before); // the fetch comes to an end
    }
    require(fetch.text.size() <= COMMAND_TEXT_SIZE);
    parse(fetch.text);
    return 0;
}
