#include "nvme/smart.h"

#include "nvme_pages.h"
#include "text.h"

#include <gtest/gtest.h>

namespace {

TEST(NvmeSmart, RecordOfOddPages) {
    const std::string most = "9223372036854775807";
    std::string edge(512, '\0');
    put(edge, 32, 0x7FFFFFFFFFFFFFFF, 8); // the largest counter told as it is
    put(edge, 48, 0x8000000000000000, 8);
    put(edge, 64 + 8, 1, 8); // the high half alone
    const std::pair<std::string, std::string> cases[] = {
        {edge, "00:;01:0;02:-273.15 C;03:0%;04:0%;05:0%;06:" + most + ";07:" + most +
                   ";08:" + most + ";09:0;"},
        // The temperature is cut to its field.
        {std::string(512, '\xFF'), "00:;01:255;02:65261.85 ;03:255%;04:255%;05:255%;06:" + most},
    };
    for (const auto& [page, start] : cases) {
        nvme_smart_log_norvik log{};
        print_log_health(reinterpret_cast<const std::uint8_t*>(page.data()), 512, log);
        copyText(log.mn, std::string(40, 'm'));
        EXPECT_EQ(start, nvmeRecord(log).substr(0, start.size()));
        EXPECT_EQ(&page == &cases[1].first, nvmeRecord(log).size() == NVME_RECORD_SIZE);
    }
}

} // namespace
