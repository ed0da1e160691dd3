#include "host/cpu_memory.h"
#include "host/os_identity.h"
#include "network_host.h"

namespace {

class Usage : public NetworkHost {
  protected:
    // What is found, and what is told of it.
    using Cases = std::vector<std::pair<std::string, std::string>>;

    template <class Give, class Call>
    void check(const Cases& cases, Give give, Call call, int selector, const std::string& label) {
        for (const auto& [found, told] : cases) {
            give(found);
            EXPECT_EQ(printed(call), told.empty() ? "" : label + " : " + told + "\n");
            EXPECT_EQ(values(selector), Texts{told}) << found;
        }
    }
};

TEST_F(Usage, MeasuresMemoryAsTopShowsIt) {
    check(
        {{"1073741824 268435456 268435456", "50;"}, // physical, inactive, free
         {"102400000 0 102398976", "0;"},           // 99999 kilobytes are shown as they are
         {"104857600 0 103284736", "1;"},           // 100864: 98.5 megabytes, shown as 99
         {"104857600 0 103283712", "2;"},           // 100863: 98
         {"107374182400 0 106837311488", "0;"},     // 99.5 gigabytes, shown as 100
         {"1 9223372036854775807 1", "-21474836;"},
         {"0 0 0", ""},
         {"1 x 1", ""}},
        [&](const std::string& amounts) { host.file("memory.txt", amounts); },
        [] { getMemoryUsage(1); }, 197, "Memory Usage %");
    EXPECT_EQ(datedLog("err"), Texts(2, "Memory Usage ->  command not found"));
}

TEST_F(Usage, UploadsTheMeanOfTheNewestSamples) {
    for (int i = 0; i < 699; ++i) { // 99 are too old in the end, 300 of 100 % and 300 of 40 % stay
        host.file("memory.txt", i < 400 ? "100 0 0" : "10240 0 6144");
        getMemoryUsage(0);
    }
    EXPECT_EQ(printed([] { getMemoryUsage(1); }), "Memory Usage % : 70;\n");
    getMemoryUsage(0);
    host.remove("memory.txt");
    printed([] { getMemoryUsage(1); }); // nothing of its own: the samples are dropped
    EXPECT_EQ(values(197), Texts{""});
    EXPECT_EQ(memory_head, nullptr);
}

TEST_F(Usage, TellsTheSystemInItsFirstLine) {
    check(
        {{"10.1-RELEASE amd64\nmore\n", "10.1-RELEASE amd64;"},
         {std::string(300, 'x') + "\n", std::string(255, 'x')},
         {"", "n/a"}},
        [](const std::string& text) { says("uname -p", text); }, getOSVersion, 193, "OS version");
    EXPECT_EQ(datedLog("err"), Texts{"OS version ->  command not found"});
}

} // namespace
