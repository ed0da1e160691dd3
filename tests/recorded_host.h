// A recorded host of a test's own: a folder under /tmp that the simulated platform reads, with
// stand-in tools first in PATH. It exists as long as the object; one at a time.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

class recorded_host {
  public:
    recorded_host() {
        char name[] = "/tmp/recorded_host.XXXXXX";
        m_folder = mkdtemp(name);
        std::filesystem::create_directory(m_folder / "bin");
        setenv("PATH", ((m_folder / "bin").string() + ":" + m_path).c_str(), 1);
        setenv("VYN_SIM_HOST", m_folder.c_str(), 1);
    }
    ~recorded_host() {
        setenv("PATH", m_path.c_str(), 1);
        unsetenv("VYN_SIM_HOST");
        std::filesystem::remove_all(m_folder);
    }
    recorded_host(const recorded_host&) = delete;
    recorded_host& operator=(const recorded_host&) = delete;

    // Writes a file below the folder, making its folders. A reader sees the old text or the new.
    void file(const std::string& name, const std::string& text) const {
        const std::filesystem::path target = m_folder / name;
        std::filesystem::create_directories(target.parent_path());
        const std::filesystem::path fresh = target.string() + ".new";
        std::ofstream(fresh, std::ios::binary) << text;
        std::filesystem::rename(fresh, target);
    }

    // Makes bin/NAME a shell script of these lines; its arguments are $1 and on, and
    // $VYN_SIM_HOST is the folder.
    void tool(const std::string& name, const std::string& lines) const {
        file("bin/" + name, "#!/bin/sh\n" + lines + "\n");
        std::filesystem::permissions(m_folder / "bin" / name, std::filesystem::perms::owner_all);
    }

    void remove(const std::string& name) const {
        std::filesystem::remove_all(m_folder / name);
    }

  private:
    std::filesystem::path m_folder;
    const std::string m_path = std::getenv("PATH");
};
