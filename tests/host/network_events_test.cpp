#include "config/configuration.h"
#include "host/network_events.h"
#include "network_host.h"
#include "text.h"

namespace {

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
            EXPECT_EQ(sent, (Bytes{0x41, 0x04, 0xD0, 0xFF, 0x6F, sent[5], sent[6], 0xFF}));
            events.push_back((sent[5] == 0xA1 ? "up " : sent[5] == 0xA2 ? "down " : "?") + index);
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
    network_list& em0 = *g_network_head;

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
        {"N/A", "10.0.0.90", {}, "10.0.0.9"},
        {"down", "10.0.0.90", {"down 1"}, "10.0.0.9"},
        {"down", "10.0.0.90", {}, "10.0.0.90"},
    };
    for (const auto& test : passes) {
        EXPECT_EQ(pass({em1, lanRecord("em0", test.link, test.ipv4)}), test.events);
        EXPECT_STREQ(em0.if_link, test.link);
        EXPECT_STREQ(em0.ipv4, test.stored);
    }
    EXPECT_EQ(pass({em1}), Texts{}); // em0 has gone, its node stays
    EXPECT_EQ(pass({lanRecord("em0", "up"), lanRecord("em2", "up")}), (Texts{"up 1", "up 3"}));
    nicStatusSel = 0;
    EXPECT_EQ(pass({lanRecord("em0", "down"), lanRecord("em3", "up")}), Texts{});
}

} // namespace
