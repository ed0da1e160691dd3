// Records become items.
#include "storage/storage_items.h"

#include "system_info.h"

#include <gtest/gtest.h>

TEST(StorageItems, ArriveInPiecesUntilThePassIsFull) {
    const std::string line(254, 'x');
    const struct {
        int times;
        std::string record;
        int count, items;
        std::string last;
        int more; // of two that come when one more is allowed
    } rows[] = {
        {1, line, 1, 1, line + ";", 2},
        {1, line + "x", 1, 2, ";", 2},
        {255, "", 255, 255, ";", 1},
        {300, "x", 256, 256, "x;", 1},
        {300, std::string(2040, 'x'), 114, 1026, ";", 0},
    };
    for (const auto& row : rows) {
        storage_items items;
        for (int i = 0; i < row.times; ++i)
            items.add(row.record);
        const list* last = items.head();
        int total = 1;
        for (; last->next != nullptr; last = last->next)
            ++total;
        EXPECT_EQ(items.count(), row.count);
        EXPECT_EQ(total, row.items);
        EXPECT_EQ(last->no, row.count - 1);
        EXPECT_EQ(last->parm, row.last);
        EXPECT_EQ(items.allListed(drive_kind::it), row.times < 300);
        items.allowOneMore();
        items.add("y");
        items.add("z");
        EXPECT_EQ(items.count(), row.count + row.more);
    }
}
