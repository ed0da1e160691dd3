#include "tools/graid.h"

#include <gtest/gtest.h>

namespace {

TEST(Graid, VolumesAreListed) {
    const struct {
        const char* text;
        const char* told;
    } rows[] = {
        {"", ""},
        {"Geom name:\nState: x\nProviders:\n1. Name: raid/r0\n", ""},
        // Of two providers the first counts.
        {"Geom name: A\nState: DEGRADED\nProviders:\n1. Name: raid/r;0\n   State: OPTIMAL\n"
         "   Components: 2\n   RAIDLevel: RAID1 E\n   Label: Name State\n2. Name: raid/r1\n"
         "   State: BROKEN\n   Components: 3\nConsumers:\n1. Name: ada0\n2. Name: /dev/ada1\n"
         "3. Name: ada0\n4. Name:\n",
         "raid/r0 OPTIMAL 2 1E ada0 ada1 ada0|"},
        // A geom without providers is named after its first disk.
        {"Geom name: A\nState: BROKEN\nConsumers:\n1. Name: ada6\n   State: ACTIVE\n",
         "ada6 ACTIVE   ada6|"},
        {"geom NAME: A\nProviders:\n1. Name: raid/r0\n2. Name: ada1\n10. Name: ada2\n. Name: x\n"
         "Geom name: A\n1. Name: ada3\nGeom name: B\n",
         "raid/r0    ada1 ada2|   |"},
    };
    for (const auto& row : rows) {
        std::string told;
        for (const graid_volume& volume : parseGraidList(row.text)) {
            told += volume.name + " " + volume.state + " " + volume.components + " " + volume.level;
            for (const std::string& member : volume.members)
                told += " " + member;
            told += "|";
        }
        EXPECT_EQ(told, row.told) << row.text;
    }
}

} // namespace
