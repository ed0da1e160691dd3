// Lines of a storage script become items.
#include "storage/storage_items.h"

#include "fake_bmc.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

constexpr collector_texts TEXTS = {"label ->", "Items", "Item", "count ->", "item ->"};

std::string lines(int number) {
    return "i=0; while [ $i -lt " + std::to_string(number) + " ]; do echo L; i=$((i+1)); done";
}

TEST(storage_items, reading) {
    const std::string zeros(300, '0');
    const struct {
        std::string script, then;
        script_result result;
        int count, total;
        std::string last;
        Bytes announced;
    } rows[] = {
        {"exit 1", "printf '\\n1;2\\nrest'", script_result::printed, 2, 3, "rest", {2, 0}},
        {"echo x", "", script_result::nothing_printed, 1, 1, "x;", {1, 0}},
        {"printf '%0254d\\n' 0", "printf '%0255d\\n' 0", script_result::printed, 2, 3, ";", {2, 0}},
        {lines(255), "", script_result::nothing_printed, 255, 255, "L;", {0, 1}},
        {lines(300), lines(300), script_result::printed, 257, 257, "L;", {2, 1}},
        {lines(256),
         "printf '%0300d\\n' 0; echo x",
         script_result::printed,
         257,
         258,
         zeros.substr(0, 45) + ";",
         {2, 1}},
        {"while :; do printf %0999d 0; done",
         "",
         script_result::nothing_printed,
         0,
         1024,
         zeros.substr(0, 255),
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
        int number = 0;
        for (const list* item = items.head; item != nullptr; item = item->next)
            if (item->parm[strlen(item->parm) - 1] == ';') {
                EXPECT_EQ(item->no, number++);
            }
        uploadItemCount(items);
        EXPECT_EQ(bmc.uploads().back(),
                  (FakeBmc::Upload{198, -1, {row.announced.begin(), row.announced.end()}}));
    }
}

TEST(storage_items, hung_script) {
    storage_items items;
    EXPECT_EQ(readItems(items, "echo done", TEXTS.label), script_result::printed);
    EXPECT_FALSE(items.timed_out);
    EXPECT_EQ(readItems(items, "echo a; printf b; exec sleep 60", TEXTS.label, 1),
              script_result::printed);
    EXPECT_TRUE(items.timed_out);
    EXPECT_EQ(items.count, 2);
    EXPECT_STREQ(items.prev->parm, "b");
}

} // namespace
