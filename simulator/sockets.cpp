#include "sockets.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace bmcsim {

Descriptor::~Descriptor() {
    if (fd >= 0)
        close(fd);
}

static bool prepare(int fd) {
    return fcntl(fd, F_SETFD, FD_CLOEXEC) == 0 && fcntl(fd, F_SETFL, O_NONBLOCK) == 0;
}

static bool unixAddress(const std::string& path, struct sockaddr_un& address) {
    address = {};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return false;
    memcpy(address.sun_path, path.data(), path.size());
    return true;
}

static Descriptor failed(const std::string& what, std::string& error) {
    error = what + ": " + strerror(errno);
    return Descriptor();
}

Descriptor connectUnix(const std::string& path) {
    struct sockaddr_un address;
    if (!unixAddress(path, address))
        return Descriptor();
    Descriptor client(socket(AF_UNIX, SOCK_STREAM, 0));
    if (client.get() < 0 ||
        connect(client.get(), reinterpret_cast<struct sockaddr*>(&address), sizeof address) != 0)
        return Descriptor();
    return client;
}

Descriptor listenUnix(const std::string& path, std::string& error) {
    struct sockaddr_un address;
    if (!unixAddress(path, address)) {
        error = path + ": no usable socket path";
        return Descriptor();
    }
    if (connectUnix(path).get() >= 0) {
        error = path + ": somebody listens there";
        return Descriptor();
    }
    if (errno == ECONNREFUSED)
        unlink(path.c_str());
    Descriptor listener(socket(AF_UNIX, SOCK_STREAM, 0));
    if (listener.get() < 0 || !prepare(listener.get()) ||
        bind(listener.get(), reinterpret_cast<struct sockaddr*>(&address), sizeof address) != 0 ||
        listen(listener.get(), 16) != 0)
        return failed(path, error);
    return listener;
}

Descriptor listenLoopback(int& port, std::string& error) {
    struct sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    const int on = 1;
    Descriptor listener(socket(AF_INET, SOCK_STREAM, 0));
    if (listener.get() < 0 || !prepare(listener.get()) ||
        setsockopt(listener.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on) != 0 ||
        bind(listener.get(), reinterpret_cast<struct sockaddr*>(&address), size) != 0 ||
        listen(listener.get(), 16) != 0 ||
        getsockname(listener.get(), reinterpret_cast<struct sockaddr*>(&address), &size) != 0)
        return failed("port", error);
    port = ntohs(address.sin_port);
    return listener;
}

bool openListener(Listener& listener, std::string& error) {
    listener.socket = listener.path.empty() ? listenLoopback(listener.port, error)
                                            : listenUnix(listener.path, error);
    return listener.socket.get() >= 0;
}

void closeListener(Listener& listener) {
    if (listener.socket.get() >= 0 && !listener.path.empty())
        unlink(listener.path.c_str());
    listener.socket = Descriptor();
}

Descriptor acceptClient(int listener) {
    Descriptor client(accept(listener, nullptr, nullptr));
    if (client.get() < 0 || !prepare(client.get()))
        return Descriptor();
    const int on = 1; // fails on a Unix socket, which has no such delay
    setsockopt(client.get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    return client;
}

} // namespace bmcsim
