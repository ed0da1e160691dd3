#include "client.h"

#include "simulator/server.h"

#include <poll.h>
#include <random>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace bmcsim;

namespace {

void put(const Descriptor& socket, const Bytes& bytes) {
    EXPECT_EQ(send(socket.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
}

// Counts messages: `wanted` unless the connection ends or 20 seconds pass.
size_t take(const Descriptor& socket, size_t wanted) {
    size_t messages = 0;
    FrameReader reader;
    struct pollfd polled = {socket.get(), POLLIN, 0};
    uint8_t buffer[1024];
    ssize_t size = 0;
    while (messages < wanted && poll(&polled, 1, 20000) > 0 &&
           (size = read(socket.get(), buffer, sizeof buffer)) > 0)
        for (const Frame& frame : feedFrames(reader, buffer, static_cast<size_t>(size)))
            messages += frame.message ? 1 : 0;
    return messages;
}

TEST(BmcsimServer, SurvivesGarbage) {
    char pattern[] = "/tmp/bmcsim-test-XXXXXX";
    const std::string folder = mkdtemp(pattern);
    const std::string bmc = folder + "/bmc";
    Server server;
    server.bmcListener.path = bmc;
    server.controlListener.path = folder + "/control";
    ASSERT_EQ(openListener(server.bmcListener) + openListener(server.controlListener), "");
    const int stop = 0;
    std::thread thread([&] { runServer(server, &stop); });

    const Descriptor honest = connectUnix(bmc);
    const Bytes deviceId = encodeMessage({9, 0x06, 0, 0x01, {}});
    std::mt19937 random(20220503); // the same garbage every time
    const auto noise = [&](size_t size) {
        Bytes bytes(size, 0);
        for (uint8_t& byte : bytes)
            byte = static_cast<uint8_t>(random() % 3 == 0 ? random() : 0xC0 + random() % 17);
        return bytes;
    };
    const uint8_t netFns[] = {0x04, 0x06, 0x0A, 0x30, 0x2C};
    const uint8_t cmds[] = {0x58, 0x59, 0x70, 0xA0, 0xB6, 0x02};
    for (int round = 0; round < 40; round++) {
        const Descriptor vandal = connectUnix(bmc);
        put(vandal, noise(1 + random() % 6000));
        for (int i = 0; i < 200; i++) { // good frames around random content
            Message message = {1, netFns[random() % 5], 0, cmds[random() % 6],
                               noise(random() % 45)};
            put(vandal, encodeMessage(message));
        }
        put(vandal, {FRAME_MESSAGE_END}); // whatever is half-sent ends here
        if (round % 4 == 0) {             // the others leave their answers unread
            EXPECT_GE(take(vandal, 100), 100U);
        }
        put(honest, deviceId);
        EXPECT_EQ(take(honest, 1), 1U);
    }
    const Descriptor control = connectUnix(folder + "/control");
    put(control, {'q', 'u', 'i', 't', '\n'});
    thread.join();
    EXPECT_NE(server.bmc.ledger.complaints.at(0).find("bad frame"), std::string::npos);
    closeListener(server.bmcListener);
    closeListener(server.controlListener);
    EXPECT_EQ(rmdir(folder.c_str()), 0);
}

} // namespace
