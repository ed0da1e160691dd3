#include "sockets.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace bmcsim {

namespace {

bool prepare(int fd) {
    return fcntl(fd, F_SETFD, FD_CLOEXEC) == 0 && fcntl(fd, F_SETFL, O_NONBLOCK) == 0;
}

// Calls bind or connect with a path; a path that fits no address is no such file.
template <typename Call>
bool withPath(Call call, int fd, const std::string& path) {
    struct sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    errno = ENOENT;
    if (path.empty() || path.size() >= sizeof address.sun_path)
        return false;
    memcpy(address.sun_path, path.data(), path.size());
    return call(fd, reinterpret_cast<struct sockaddr*>(&address), sizeof address) == 0;
}

} // namespace

Descriptor::~Descriptor() {
    if (fd >= 0)
        close(fd);
}

Descriptor connectUnix(const std::string& path) {
    Descriptor client(socket(AF_UNIX, SOCK_STREAM, 0));
    return client.get() >= 0 && withPath(connect, client.get(), path) ? std::move(client)
                                                                      : Descriptor();
}

std::string openListener(Listener& listener) {
    const std::string& path = listener.path;
    if (connectUnix(path).get() >= 0)
        return path + ": somebody listens there";
    if (errno == ECONNREFUSED)
        unlink(path.c_str());
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (socket.get() < 0 || !prepare(socket.get()) || !withPath(bind, socket.get(), path) ||
        listen(socket.get(), 16) != 0)
        return path + ": " + strerror(errno);
    listener.socket = std::move(socket);
    return "";
}

void closeListener(Listener& listener) {
    if (listener.socket.get() >= 0)
        unlink(listener.path.c_str());
    listener.socket = Descriptor();
}

Descriptor acceptClient(const Listener& listener) {
    Descriptor client(accept(listener.socket.get(), nullptr, nullptr));
    return client.get() >= 0 && prepare(client.get()) ? std::move(client) : Descriptor();
}

} // namespace bmcsim
