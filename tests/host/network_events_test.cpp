#include "config/configuration.h"
#include "host/network_events.h"
#include "network_host.h"
#include "text.h"

namespace {

// The index is the digit at the end of the name plus 1.
list lanRecord(const std::string& name, const std::string& state, const std::string& ipv4 = "N/A") {
    list record{};
    copyText(record.parm, std::string(1, static_cast<char>(name.back() + 1)) + ";N/A;" + name +
                              ";" + ipv4 + ";N/A;N/A;N/A;h;N/A;0;N/A;" + state + ";");
    return record;
}

class LinkEvents : public NetworkHost {
  protected:
    // One pass; returns the events as "up 1" or "down 1".
    Texts pass(std::vector<list> records) {
        bmc.forget();
        for (std::size_t i = 1; i < records.size(); ++i)
            records[i - 1].next = &records[i];
        printed([&] { addNetworkSELRecord(records.empty() ? nullptr : records.data()); });
        static_first_init = 0;
        Texts events;
        for (const Bytes& sent : bmc.sent(0x04, 0x02)) {
            const std::string index = std::to_string(sent.at(6));
            if (sent == Bytes{0x41, 0x04, 0xD0, 0xFF, 0x6F, 0xA1, sent[6], 0xFF})
                events.push_back("up " + index);
            else if (sent == Bytes{0x41, 0x04, 0xD0, 0xFF, 0x6F, 0xA2, sent[6], 0xFF})
                events.push_back("down " + index);
            else
                ADD_FAILURE() << "not a link event";
        }
        return events;
    }
};

TEST_F(LinkEvents, FollowEachInterfaceByName) {
    const list em1 = lanRecord("em1", "down");
    nicStatusSel = 1;
    EXPECT_EQ(pass({}), Texts{});
    static_first_init = 1;
    EXPECT_EQ(pass({lanRecord("em0", "up", "10.0.0.1"), em1}), Texts{"up 1"});
    ASSERT_NE(g_network_head, nullptr);
    network_list& em0 = *g_network_head;
    EXPECT_EQ(g_network_head->next, g_network_prev);

    const struct {
        const char* link;
        const char* ipv4;
        Texts events;
        const char* stored; // IPv4 list kept after the pass
    } passes[] = {
        {"up", "10.0.0.1,10.0.0.2", {}, "10.0.0.1,10.0.0.2"},
        {"up", "10.0.0.2,10.0.0.1", {}, "10.0.0.1,10.0.0.2"}, // the same addresses
        {"down", "10.0.0.9", {"down 1"}, "10.0.0.1,10.0.0.2"},
        {"down", "10.0.0.9", {}, "10.0.0.9"}, // taken over one pass later
        {"up", "10.0.0.9", {"up 1"}, "10.0.0.9"},
        {"N/A", "10.0.0.9", {}, "10.0.0.9"},
        {"down", "10.0.0.9", {"down 1"}, "10.0.0.9"},
    };
    for (const auto& test : passes) {
        EXPECT_EQ(pass({em1, lanRecord("em0", test.link, test.ipv4)}), test.events);
        EXPECT_STREQ(em0.if_link, test.link);
        EXPECT_STREQ(em0.ipv4, test.stored);
    }
    EXPECT_EQ(pass({em1}), Texts{}); // em0 has gone, its node stays
    EXPECT_EQ(pass({lanRecord("em0", "up"), lanRecord("em2", "up")}), (Texts{"up 1", "up 3"}));
    EXPECT_STREQ(g_network_prev->name, "em2");

    nicStatusSel = 0;
    EXPECT_EQ(pass({lanRecord("em0", "down"), lanRecord("em3", "up")}), Texts{});
    EXPECT_STREQ(em0.if_link, "down");
    EXPECT_EQ(datedLog("com").size(), 4U + 6U); // names seen, events sent
}

TEST_F(LinkEvents, SurviveACutRecordAndARefusingBmc) {
    nicStatusSel = 1;
    list cut{};
    copyText(cut.parm, "300;02:00:00:00:00:00;em0;10.0.0.1");
    EXPECT_EQ(pass({cut}), Texts{});
    EXPECT_STREQ(g_network_head->if_link, "");
    list whole = lanRecord("em0", "up", "10.0.0.1");
    copyText(whole.parm, "300" + std::string(whole.parm).substr(1));
    bmc.answer(0x04, 0x02, {0x81});
    EXPECT_EQ(pass({whole}), Texts{"up 44"}); // the low eight bits of the index
    EXPECT_EQ(pass({whole}), Texts{});        // a refused event is not repeated
}

TEST(CompareIPAddrs, LooksForEveryAddressOfTheFirstList) {
    EXPECT_EQ(compareIPAddrs("10.0.0.1,10.0.0.2", "10.0.0.2,10.0.0.1"), 0);
    EXPECT_EQ(compareIPAddrs("10.0.0.1,10.0.0.1", "10.0.0.1,10.0.0.2"), 0);
    EXPECT_EQ(compareIPAddrs("10.0.0.1,10.0.0.2", "10.0.0.1,10.0.0.1"), 1);
    EXPECT_EQ(compareIPAddrs("10.0.0.1", "10.0.0.1,10.0.0.2"), 1);
    EXPECT_EQ(compareIPAddrs("10.0.0.1", "10.0.0.10"), 1);
    EXPECT_EQ(compareIPAddrs(",a", "a,"), 0);
}

} // namespace
