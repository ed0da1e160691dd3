// Records become items.
#include "storage/storage_items.h"

#include <gtest/gtest.h>

namespace {

TEST(StorageItems, Adding) {
    const struct {
        std::size_t length; // of each record
        int records, more;  // `more` are added after one more was allowed
        int count, total;
        std::size_t last; // length of the last item
        bool listed;
    } rows[] = {
        {0, 1, 0, 1, 1, 1, true},
        {254, 1, 0, 1, 1, 255, true},
        {255, 1, 1, 2, 4, 1, true},
        {5, 255, 0, 255, 255, 6, true},
        {5, 300, 0, 256, 256, 6, false},
        {5, 300, 2, 257, 257, 6, false},
        {3000, 100, 0, 86, 1032, 196, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::to_string(row.records) + " of " + std::to_string(row.length));
        storage_items items;
        for (int i = 0; i < row.records; ++i)
            items.add(std::string(row.length, 'L'), false);
        if (row.more > 0)
            items.allowOneMore();
        for (int i = 0; i < row.more; ++i)
            items.add(std::string(row.length, 'L'));
        int total = 1;
        const list* item = items.head();
        for (; item->next != nullptr; item = item->next)
            ++total;
        EXPECT_EQ(items.count(), row.count);
        EXPECT_EQ(total, row.total);
        EXPECT_EQ(item->no, row.count - 1);
        EXPECT_EQ(std::string(item->parm), std::string(row.last - 1, 'L') + ";");
        EXPECT_EQ(items.stateKnown(static_cast<std::size_t>(total) - 1), row.more > 0);
        EXPECT_EQ(items.allListed(drive_kind::it), row.listed);
        items.listingUnknown(drive_kind::it);
        EXPECT_FALSE(items.allListed(drive_kind::it));
        EXPECT_EQ(items.allListed(drive_kind::raid), row.listed);
    }
}

} // namespace
