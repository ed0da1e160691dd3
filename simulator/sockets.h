// Descriptors and sockets of the simulator. Everything listens on a Unix path or on loopback.
#pragma once

#include <string>
#include <utility>

namespace bmcsim {

// A descriptor that closes itself.
class Descriptor {
  public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) : fd(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : fd(std::exchange(other.fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(fd, other.fd);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor();
    int get() const {
        return fd;
    }

  private:
    int fd = -1;
};

// Listen without blocking; -1 inside and `error` set when that fails. A path left by a dead
// process is taken over, a path where somebody answers is not. Port 0 picks a free port, which
// comes back in `port`.
Descriptor listenUnix(const std::string& path, std::string& error);
Descriptor listenLoopback(int& port, std::string& error);
Descriptor connectUnix(const std::string& path);

// One place to listen: a Unix path, or a loopback port when the path is empty.
struct Listener {
    std::string path;
    int port = 0;
    Descriptor socket;
};
bool openListener(Listener& listener, std::string& error);
// Nobody can connect any more; the path is removed.
void closeListener(Listener& listener);

// Accepts one connection, not blocking; -1 inside when there is none.
Descriptor acceptClient(int listener);

} // namespace bmcsim
