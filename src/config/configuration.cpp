#include "config/configuration.h"

#include "config/logs.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <libconfig.h>
#include <sys/stat.h>
#include <unistd.h>

const char* const ini_file = VYN_FOLDER "/vyn.ini";

std::atomic<int> updateSec{0};
int nicStatusSel = 1;
int intelRSTeVROC = 1;
int raidCard3rdParty = 0;
std::string raidCards;

namespace {

constexpr int DEFAULT_UPDATE_FREQ = 10;
constexpr int SHORTEST_UPDATE = 1;
constexpr int LONGEST_UPDATE = 60;

struct configuration {
    config_t cfg;
    configuration() {
        config_init(&cfg);
    }
    ~configuration() {
        config_destroy(&cfg);
    }
    configuration(const configuration&) = delete;
    configuration& operator=(const configuration&) = delete;
};

void readSettings(config_t& cfg) {
    if (config_setting_t* group = config_lookup(&cfg, "Config")) {
        int seconds = updateSec;
        config_setting_lookup_int(group, "updateFreq", &seconds);
        updateSec = seconds;
    }
    if (config_setting_t* group = config_lookup(&cfg, "Customize")) {
        config_setting_lookup_bool(group, "nicStatusSel", &nicStatusSel);
        config_setting_lookup_bool(group, "intelRsteVroc", &intelRSTeVROC);
        config_setting_lookup_bool(group, "raidCard3rdParty", &raidCard3rdParty);
        const char* pattern = nullptr;
        if (config_setting_lookup_string(group, "raidCards", &pattern) == CONFIG_TRUE)
            raidCards = pattern;
    }
}

void addString(config_setting_t* group, const char* name, const char* value) {
    config_setting_set_string(config_setting_add(group, name, CONFIG_TYPE_STRING), value);
}

void addBool(config_setting_t* group, const char* name, int value) {
    config_setting_set_bool(config_setting_add(group, name, CONFIG_TYPE_BOOL), value);
}

void addDefaults(config_t& cfg) {
    config_setting_t* root = config_root_setting(&cfg);
    config_setting_t* group = config_setting_add(root, "Path", CONFIG_TYPE_GROUP);
    addString(group, "installedPath", VYN_FOLDER);
    addString(group, "logPath", log_file);
    addString(group, "errlogPath", VYN_FOLDER "/vyn.err.log");
    addString(group, "commandlogPath", VYN_FOLDER "/vyn.com.log");

    group = config_setting_add(root, "Config", CONFIG_TYPE_GROUP);
    config_setting_t* freq = config_setting_add(group, "updateFreq", CONFIG_TYPE_INT);
    config_setting_set_int(freq, DEFAULT_UPDATE_FREQ);
    updateSec = config_setting_get_int(freq);

    group = config_setting_add(root, "Customize", CONFIG_TYPE_GROUP);
    addBool(group, "nicStatusSel", nicStatusSel);
    addBool(group, "intelRsteVroc", intelRSTeVROC);
    addBool(group, "raidCard3rdParty", raidCard3rdParty);
    addString(group, "raidCards", raidCards.c_str());
}

std::string configurationText(config_t& cfg) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&text, &size);
    if (stream == nullptr)
        return {};
    config_write(&cfg, stream);
    std::fclose(stream);
    std::string copy(text, size);
    std::free(text);
    return copy;
}

// Where the file really stands: links are followed, one that leads nowhere too.
std::filesystem::path configurationPath() {
    std::filesystem::path path = ini_file;
    std::error_code error;
    for (int links = 0; links < 8 && std::filesystem::is_symlink(path, error); ++links)
        path = path.parent_path() / std::filesystem::read_symlink(path, error);
    return path;
}

// Gives the open file the mode and, where this user may, the owner of the one that it will replace.
bool takeOver(int fd, const char* replaced) {
    struct stat status {};
    if (stat(replaced, &status) != 0)
        return true;
    (void)!fchown(fd, status.st_uid, status.st_gid);
    return fchmod(fd, status.st_mode & 07777) == 0;
}

bool writeSynced(const char* path, const char* replaced, const std::string& text) {
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd == -1)
        return false;
    const bool written = takeOver(fd, replaced) &&
                         write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size()) &&
                         fsync(fd) == 0;
    return close(fd) == 0 && written;
}

// Beside the old file, synced and renamed: a full disk or a crash leaves the old one whole. (The
// library's own writing takes a full disk for success and leaves the file cut.)
bool writeConfiguration(config_t& cfg) {
    const std::string path = configurationPath(), beside = path + ".new";
    const std::string text = configurationText(cfg);
    if (!text.empty() && writeSynced(beside.c_str(), path.c_str(), text) &&
        std::rename(beside.c_str(), path.c_str()) == 0)
        return true;
    std::remove(beside.c_str());
    std::fputs("Error while writing file.\n", stderr);
    return false;
}

} // namespace

int initIni() {
    configuration existing;
    if (config_read_file(&existing.cfg, ini_file) == CONFIG_TRUE) {
        readSettings(existing.cfg);
    } else {
        // A new object: the library may keep half of a file that failed to parse.
        configuration fresh;
        addDefaults(fresh.cfg);
        if (!writeConfiguration(fresh.cfg)) {
            printErrLog("initIni ", "Error while writing file");
            return 1;
        }
    }
    updateSec = std::clamp(updateSec.load(), SHORTEST_UPDATE, LONGEST_UPDATE);
    return 0;
}

void setUpdateFreq(int seconds) {
    updateSec = std::clamp(seconds, SHORTEST_UPDATE, LONGEST_UPDATE);
    configuration existing;
    if (config_read_file(&existing.cfg, ini_file) != CONFIG_TRUE)
        return;
    config_setting_t* group = config_lookup(&existing.cfg, "Config");
    config_setting_t* freq =
        group == nullptr ? nullptr : config_setting_get_member(group, "updateFreq");
    if (freq == nullptr)
        return;
    config_setting_set_int(freq, updateSec);
    writeConfiguration(existing.cfg);
}
