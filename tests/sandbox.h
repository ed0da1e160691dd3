// A private /opt/norvik for tests of code that writes logs or flags under fixed names.
#pragma once

#include <string>
#include <vector>

// Moves this process into mount and System V IPC namespaces of its own, where /opt/norvik is empty
// and no flag exists. Once, before any thread is started. False where the machine permits none;
// the test must then be skipped:  if (!enterSandbox()) GTEST_SKIP() << SANDBOX_DENIED;
bool enterSandbox();
constexpr const char* SANDBOX_DENIED = "namespaces are not permitted here";

// The text of a file, empty when it is missing.
std::string fileText(const std::string& path);

// The lines of today's error log ("err") or command log ("com"), their times removed.
std::vector<std::string> datedLog(const std::string& kind);
