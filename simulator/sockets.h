// Descriptors and Unix sockets of the simulator.
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

// -1 inside and errno when that fails.
Descriptor connectUnix(const std::string& path);

struct Listener {
    std::string path;
    Descriptor socket;
};
// Listens, not blocking. A path left by a dead process is taken over, a path where somebody answers
// is not. Returns an error text, empty when all is well.
std::string openListener(Listener& listener);
// Nobody can connect any more; the path is removed.
void closeListener(Listener& listener);

// Accepts one connection, not blocking; -1 inside when there is none.
Descriptor acceptClient(const Listener& listener);

} // namespace bmcsim
