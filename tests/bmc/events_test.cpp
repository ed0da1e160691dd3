#include "bmc/events.h"

#include "bmc_test.h"

using EventsTest = BmcTest;

TEST_F(EventsTest, EveryOutcomeIsLogged) {
    const selRecord record{0x41, 0x04, 0x0D, 0xFE, 0xF0, 0xA1, 0x03, 0xFD};
    struct {
        Bytes answer;
        const char *kind, *line; // after the sender's title
    } const cases[] = {
        {{0x00}, "com", "%  done"},
        {{0x80}, "err", "%  operation not support for this record type"},
        {{0x81}, "err", "%  cannot execute command, SEL erase in progress"},
        {{0xC1}, "err", "%fail, cCode ->  193"},
    };
    struct {
        int (*send)(const selRecord&);
        std::string title;
    } const senders[] = {{sendLanSEL, "send Lan SEL "}, {sendSmartSEL, "send Smart SEL "}};
    for (const auto& sender : senders) {
        for (const auto& c : cases) {
            SCOPED_TRACE(sender.title + c.line);
            bmc->forget();
            bmc->queue(0x04, 0x02, {c.answer});
            EXPECT_EQ(sender.send(record), c.answer[0] == 0 ? 0 : 1);
            EXPECT_EQ(bmc->sent(0x04, 0x02),
                      std::vector<Bytes>{Bytes({0x41, 0x04, 0x0D, 0xFE, 0xF0, 0xA1, 0x03, 0xFD})});
            ASSERT_FALSE(datedLog(c.kind).empty());
            EXPECT_EQ(datedLog(c.kind).back(), sender.title + (c.line + 1));
        }
    }
    EXPECT_EQ(datedLog("err").size(), 6U);
    EXPECT_EQ(datedLog("com").size(), 2U);
}
