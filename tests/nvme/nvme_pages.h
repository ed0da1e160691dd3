// NVMe controllers for a recorded host of a test's own, their pages put together here.
#pragma once

#include "recorded_host.h"
#include "tools/program.h"

#include <cstdint>

// While it lives, /dev holds these names.
class dev_listing {
  public:
    explicit dev_listing(std::vector<std::string> listed) {
        names = std::move(listed);
        tools.list_folder = [](const char*) { return names; };
    }
    ~dev_listing() {
        tools.list_folder = listFolder;
    }
    dev_listing(const dev_listing&) = delete;
    dev_listing& operator=(const dev_listing&) = delete;

  private:
    inline static std::vector<std::string> names;
};

inline void put(std::string& page, std::size_t offset, std::uint64_t value, std::size_t bytes) {
    for (std::size_t i = 0; i < bytes; i++)
        page[offset + i] = static_cast<char>(value >> 8 * i);
}

// Format 1 is in use.
inline std::string namespacePage(std::uint64_t blocks, unsigned lbads) {
    std::string page(4096, '\0');
    put(page, 0, blocks, 8);
    put(page, 26, 0x11, 1);
    put(page, 128 + 4 + 2, lbads, 1);
    return page;
}

// 308 kelvin; counter n of the ten holds n + 1.
inline std::string healthPage(unsigned warning) {
    std::string page(512, '\0');
    put(page, 0, 0x030A640134ULL << 8 | warning, 6);
    for (std::size_t n = 0; n < 10; n++)
        put(page, 32 + 16 * n, n + 1, 8);
    return page;
}

inline void addDevice(const recorded_host& host, const std::string& name,
                      const std::string& serial = "VY10X0042",
                      const std::string& model = "Quarry 960", unsigned warning = 0) {
    std::string controller(4096, '\0');
    controller.replace(4, 60, 60, ' ');
    controller.replace(4, serial.size(), serial);
    controller.replace(24, model.size(), model);
    host.file("dev/" + name, "");
    host.file(name + "/controller.bin", controller);
    host.file(name + "/namespace1.bin", namespacePage(1000215216, 9));
    host.file(name + "/health.bin", healthPage(warning));
}
