// Programs, files and folders of a test's own, in place of the machine's, while the object lives.
// One at a time.
#pragma once

#include "tools/ask.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

class fake_programs {
  public:
    fake_programs() {
        current = this;
        for (int cycle = 0; cycle < 3 * HUNG_CYCLES; ++cycle) // nothing is remembered
            beginAskingCycle();
        tools.run = run;
        tools.read_file = readFile;
        tools.list_folder = listFolder;
    }
    ~fake_programs() {
        tools = {};
    }
    fake_programs(const fake_programs&) = delete;
    fake_programs& operator=(const fake_programs&) = delete;

    // What "program argument argument" is answered with. A command line that is not here exits with
    // status 1, and a program of which no command line is here is missing.
    std::map<std::string, program_answer> answers;
    std::map<std::string, std::string> files;
    std::map<std::string, std::vector<std::string>> folders;
    std::vector<std::string> asked; // every command line, in order

    void print(const std::string& words, const std::string& text, int status = 0) {
        answers[words] = {program_end::exited, status, text};
    }

    // Answers as a recorded host of the source tree does.
    void play(const std::string& host) {
        m_host = std::filesystem::path(__FILE__).parent_path().parent_path() / "hosts" / host;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(m_host / "dev", none))
            folders["/dev"].push_back(entry.path().filename());
        std::sort(folders["/dev"].begin(), folders["/dev"].end());
    }

  private:
    static program_answer run(const command_line& words, const program_limits&) {
        std::string line, name;
        for (const std::string& word : words)
            line += (line.empty() ? "" : " ") + word;
        current->asked.push_back(line);
        if (const auto found = current->answers.find(line); found != current->answers.end())
            return found->second;
        for (const char c : line)
            name += c == ' ' ? "_" : c == '/' ? "%2F" : std::string(1, c);
        const std::string file = current->m_host / "out" / name;
        if (std::filesystem::exists(file))
            return {program_end::exited, std::atoi(text(file + ".rc").c_str()), text(file)};
        const auto same = current->answers.lower_bound(words.front() + " ");
        const bool there = !current->m_host.empty() ||
                           (same != current->answers.end() &&
                            same->first.compare(0, words.front().size(), words.front()) == 0);
        return {there ? program_end::exited : program_end::missing, 1, ""};
    }
    static std::optional<std::string> readFile(const char* path) {
        const auto found = current->files.find(path);
        return found == current->files.end() ? std::nullopt : std::optional(found->second);
    }
    static std::vector<std::string> listFolder(const char* path) {
        return current->folders[path];
    }
    static std::string text(const std::string& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    static inline fake_programs* current = nullptr;
    std::filesystem::path m_host;
};
