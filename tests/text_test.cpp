#include "text.h"

#include <gtest/gtest.h>

TEST(Text, RecordsAndNumbersAreBounded) {
    std::string text(RECORD_SIZE - 1, ';'), cut = "one;;\ntwo";
    replaceEmptyToNA(text);
    EXPECT_EQ(text.size(), RECORD_SIZE - 1);
    replaceEmptyToNA(cut);
    EXPECT_EQ(cut, "one;N/A;");
    EXPECT_EQ(leadingInteger(" -12x", 7), -12);
    EXPECT_EQ(leadingInteger("-", 7), 7);
    EXPECT_EQ(leadingInteger("99999999999999999999", 7), 2147483647);
    EXPECT_EQ(leadingInteger("-99999999999999999999", 7), -2147483647 - 1);
}
