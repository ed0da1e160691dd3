// Lines of a storage script become items.
#include "storage/storage_items.h"

#include "fake_bmc.h"

#include <gtest/gtest.h>

namespace {

constexpr collector_texts TEXTS = {"label ->", "Items", "Item", "count ->", "item ->"};

std::string lines(int number) {
    return "i=0; while [ $i -lt " + std::to_string(number) + " ]; do echo L; i=$((i+1)); done";
}

TEST(storage_items, reading) {
    const struct {
        std::string script, then;
        script_result result;
        int count, total;
        std::string last;
        Bytes announced;
    } rows[] = {
        {"exit 1", "printf '\\n1;2\\nrest'", script_result::printed, 2, 3, "rest", {2, 0}},
        {"printf '%0254d\\n' 0", "printf '%0255d\\n' 0", script_result::printed, 2, 3, ";", {2, 0}},
        {lines(255), "", script_result::nothing_printed, 255, 255, "L;", {0, 1}},
        {lines(300), lines(300), script_result::printed, 257, 257, "L;", {2, 1}},
        {"while :; do printf %0999d 0; done",
         "",
         script_result::nothing_printed,
         0,
         1024,
         std::string(255, '0'),
         {0, 0}},
    };
    FakeBmc bmc;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.script + " + " + row.then);
        storage_items items;
        readItems(items, row.script.c_str(), TEXTS.label);
        EXPECT_EQ(readItems(items, row.then.c_str(), TEXTS.label), row.result);
        EXPECT_EQ(items.count, row.count);
        EXPECT_EQ(items.total, row.total);
        EXPECT_EQ(items.prev->parm, row.last);
        uploadItemCount(items);
        EXPECT_EQ(bmc.uploads().back(),
                  (FakeBmc::Upload{198, -1, {row.announced.begin(), row.announced.end()}}));
    }
}

} // namespace
