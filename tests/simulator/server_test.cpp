#include "client.h"

#include "simulator/server.h"

#include <gtest/gtest.h>

#include <csignal>
#include <poll.h>
#include <random>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace bmcsim;

namespace {

// A simulator on a thread of its own, listening in a folder that goes away with it.
class Running {
  public:
    Running() {
        char pattern[] = "/tmp/bmcsim-test-XXXXXX";
        folder = mkdtemp(pattern);
        std::string error;
        server.bmcListeners.push_back({folder + "/bmc", 0, {}});
        server.controlListeners.push_back({folder + "/control", 0, {}});
        EXPECT_TRUE(openListener(server.bmcListeners[0], error)) << error;
        EXPECT_TRUE(openListener(server.controlListeners[0], error)) << error;
        signal(SIGPIPE, SIG_IGN);
        thread = std::thread([this] { runServer(server, &stop); });
    }
    ~Running() {
        ask("quit");
        thread.join();
        closeListener(server.bmcListeners[0]);
        closeListener(server.controlListeners[0]);
        rmdir(folder.c_str());
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    Descriptor connectBmc() const {
        return connectUnix(folder + "/bmc");
    }
    // The whole reply of a command.
    std::string ask(const std::string& command) const {
        const Descriptor client = connectUnix(folder + "/control");
        const std::string line = command + "\n";
        EXPECT_EQ(write(client.get(), line.data(), line.size()), static_cast<ssize_t>(line.size()));
        shutdown(client.get(), SHUT_WR);
        std::string reply;
        char buffer[1024];
        ssize_t count = 0;
        while ((count = read(client.get(), buffer, sizeof buffer)) > 0)
            reply.append(buffer, static_cast<size_t>(count));
        return reply;
    }

  private:
    std::string folder;
    Server server;
    volatile int stop = 0;
    std::thread thread;
};

void put(const Descriptor& socket, const Bytes& bytes) {
    EXPECT_EQ(send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
}

// Reads until `count` messages have come or the connection ends (or 20 seconds have passed).
std::vector<Message> take(const Descriptor& socket, size_t count) {
    std::vector<Message> messages;
    FrameReader reader;
    const FrameSink sink = {[&](const Message& message) { messages.push_back(message); },
                            [](const Bytes&) {}, [](const std::string&) {}};
    struct pollfd polled = {socket.get(), POLLIN, 0};
    uint8_t buffer[1024];
    while (messages.size() < count && poll(&polled, 1, 20000) > 0) {
        const ssize_t size = read(socket.get(), buffer, sizeof buffer);
        if (size <= 0)
            break;
        feedFrames(reader, buffer, static_cast<size_t>(size), sink);
    }
    return messages;
}

Bytes deviceId(uint8_t sequence) {
    return encodeMessage({sequence, 0x06, 0, 0x01, {}});
}

TEST(BmcsimServer, GreetsAndServesSeveralClients) {
    const Running running;
    const Descriptor one = running.connectBmc();
    const Descriptor two = running.connectBmc();
    Bytes greeting(4, 0);
    ASSERT_EQ(recv(one.get(), greeting.data(), 4, MSG_WAITALL), 4);
    EXPECT_EQ(greeting, hex("A0 FF 01 A1"));
    put(one, hex("FF 01 A1 08 3F A1"));
    Bytes pipelined;
    for (const uint8_t sequence : hex("A0 A1 AA 01")) {
        const Bytes request = deviceId(sequence);
        pipelined.insert(pipelined.end(), request.begin(), request.end());
    }
    put(one, pipelined);
    for (const uint8_t byte : deviceId(7)) // in the smallest pieces
        put(two, {byte});
    const std::vector<Message> answers = take(one, 4);
    ASSERT_EQ(answers.size(), 4U);
    EXPECT_EQ(answers[2].sequence, 0xAA);
    EXPECT_EQ(answers[2].netFn, 0x07);
    EXPECT_EQ(take(two, 1).size(), 1U);
    EXPECT_EQ(running.ask("wait 20 clients 2"), "ok\n");
    EXPECT_EQ(running.ask("wait 0 clients 3"), "error: timed out waiting for clients 3\n");
}

TEST(BmcsimServer, SurvivesGarbage) {
    const Running running;
    const Descriptor honest = running.connectBmc();
    std::mt19937 random(20220503); // the same garbage every time
    for (int round = 0; round < 40; round++) {
        const Descriptor vandal = running.connectBmc();
        Bytes garbage(1 + random() % 6000, 0);
        for (uint8_t& byte : garbage)
            byte = static_cast<uint8_t>(random());
        put(vandal, garbage);
        for (int i = 0; i < 200; i++) { // good frames around random content
            Message message = {static_cast<uint8_t>(random()), 0, 0, 0, {}};
            const uint8_t netFns[] = {0x04, 0x06, 0x0A, 0x30, static_cast<uint8_t>(random() % 64)};
            const uint8_t cmds[] = {0x58, 0x59, 0x70, 0xA0, 0xB6, static_cast<uint8_t>(random())};
            message.netFn = netFns[random() % 5];
            message.cmd = cmds[random() % 6];
            message.data.resize(random() % 45);
            for (uint8_t& byte : message.data)
                byte = static_cast<uint8_t>(random() % 3 == 0 ? random() : 0xC0 + random() % 17);
            put(vandal, encodeMessage(message));
        }
        put(vandal, {FRAME_MESSAGE_END}); // whatever is half-sent ends here
        put(vandal, deviceId(9));
        if (round % 4 == 0) { // the others leave their answers unread
            EXPECT_GT(take(vandal, 100).size(), 99U);
        }
        put(honest, deviceId(static_cast<uint8_t>(round)));
        ASSERT_EQ(take(honest, 1).size(), 1U);
    }
    EXPECT_EQ(running.ask("show").substr(0, 4), "BMC\n");
    EXPECT_EQ(running.ask("wait 20 bad 1"), "ok\n");
}

TEST(BmcsimServer, LateAnswersAndLostConnections) {
    const Running running;
    running.ask("fault 06/01 late 300 1");
    const Descriptor client = running.connectBmc();
    Bytes both = deviceId(1);
    for (const uint8_t byte : deviceId(2))
        both.push_back(byte);
    put(client, both); // at once, so that both are taken before the first is due
    const std::vector<Message> answers = take(client, 2);
    ASSERT_EQ(answers.size(), 2U);
    EXPECT_EQ(answers[0].sequence, 2); // the late one comes last
    EXPECT_EQ(answers[1].sequence, 1);
    running.ask("fault 06/01 midframe 1");
    put(client, deviceId(3));
    EXPECT_TRUE(take(client, 1).empty()); // ends by the lost connection
    EXPECT_EQ(running.ask("wait 20 clients 0"), "ok\n");
    EXPECT_EQ(running.ask("away"), "ok\n");
    EXPECT_LT(running.connectBmc().get(), 0);
    EXPECT_EQ(running.ask("back"), "ok\n");
    const Descriptor again = running.connectBmc();
    put(again, deviceId(4));
    EXPECT_EQ(take(again, 1).size(), 1U);
}

TEST(BmcsimServer, AWaitHoldsUpNobody) {
    const Running running;
    std::string reply;
    std::thread waiting([&] { reply = running.ask("wait 20 requests 06/01 1\nraw 999"); });
    EXPECT_EQ(running.ask("raw 192"), "ok\n");
    const Descriptor client = running.connectBmc();
    put(client, deviceId(1));
    EXPECT_EQ(take(client, 1).size(), 1U);
    waiting.join();
    EXPECT_EQ(reply, "ok\nerror: raw SELECTOR\n"); // the line after the wait came after it
}

TEST(BmcsimServer, ListensOnLoopbackAndTakesOverADeadPath) {
    std::string error;
    Listener port = {"", 0, {}};
    ASSERT_TRUE(openListener(port, error)) << error;
    EXPECT_GT(port.port, 0);
    char pattern[] = "/tmp/bmcsim-test-XXXXXX";
    const std::string folder = mkdtemp(pattern);
    Listener first = {folder + "/s", 0, {}};
    ASSERT_TRUE(openListener(first, error)) << error;
    Listener second = {folder + "/s", 0, {}};
    EXPECT_FALSE(openListener(second, error)); // somebody is there
    first.socket = Descriptor();               // it died without removing its path
    EXPECT_TRUE(openListener(second, error)) << error;
    closeListener(second);
    EXPECT_EQ(rmdir(folder.c_str()), 0);
}

} // namespace
