#include "text.h"

#include <gtest/gtest.h>

TEST(Text, EmptyFieldsAreFilled) {
    const struct {
        const char* text;
        const char* filled;
        const char* filled_except_double_colon;
    } rows[] = {
        {";:;", ";N/A:N/A;", ";N/A:N/A;"},
        {":::", ":N/A:N/A:", ":::"},
        {"a;::1;1::;;::;", "a;N/A:N/A:1;1:N/A:N/A;N/A;N/A:N/A:N/A;", "a;::1;1::;N/A;::;"},
        {"one;;\ntwo", "one;N/A;", "one;N/A;"},
    };
    for (const auto& row : rows) {
        std::string text = row.text, other = row.text;
        replaceEmptyToNA(text);
        replaceEmptyToNAExceptDoubleColon(other);
        EXPECT_EQ(text, row.filled) << row.text;
        EXPECT_EQ(other, row.filled_except_double_colon) << row.text;
    }
    std::string separators(RECORD_SIZE - 1, ';');
    replaceEmptyToNA(separators);
    EXPECT_EQ(separators.size(), RECORD_SIZE - 1);
}

TEST(Text, NumbersAreBounded) {
    EXPECT_EQ(leadingInteger(" -12x", 7), -12);
    EXPECT_EQ(leadingInteger("-", 7), 7);
    EXPECT_EQ(leadingInteger("99999999999999999999", 7), 2147483647);
    EXPECT_EQ(leadingInteger("-99999999999999999999", 7), -2147483647 - 1);
}
