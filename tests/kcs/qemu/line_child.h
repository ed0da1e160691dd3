// A child process that is talked to line by line over its standard input and output.
#pragma once

#include <string>
#include <vector>

class line_child {
  public:
    line_child() = default;
    ~line_child(); // ends the process
    line_child(const line_child&) = delete;
    line_child& operator=(const line_child&) = delete;

    // False when the program could not be started. `arguments` begins with the program's name,
    // which is looked up in PATH.
    bool start(std::vector<std::string> arguments);
    void send(const std::string& line);
    // The next line, without its end. Empty when the process has ended or is silent for 10 s.
    std::string receive();

  private:
    int m_pid = -1;
    int m_in = -1, m_out = -1;
    std::string m_buffer;
};
