// Shared record types, constants and process-wide state.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

using BYTE = unsigned char;
using DWORD = unsigned long;

constexpr const char* VYN_VERSION = "1.7.0";
constexpr const char* VYN_BUILD = "220503";
constexpr const char* VYN_PROTOCOL = "0x01";

constexpr std::size_t RECORD_SIZE = 512; // a record's text field: 511 characters and the terminator

// One text record of a collector.
struct list {
    int no;
    char parm[RECORD_SIZE];
    list* next;
};

// Ends the process with `status` after flushing standard output, without running destructors
// under threads that may still be at work. Every way out of the process is this one; once a thread
// has begun its farewell, another thread that comes here waits for it to end the process.
[[noreturn]] void endProcess(int status);

// Makes the calling thread the one that ends the process, with something left to do before.
void beginFarewell();
bool farewellBegun();

// Appends the nodes from `first` to `last`, none when `first` is null, at the tail of the list that
// `head` and `prev` (its last node) describe; `last` becomes `prev`.
template <class Node>
void appendNodes(Node*& head, Node*& prev, Node* first, Node* last) {
    if (first == nullptr)
        return;
    (head == nullptr ? head : prev->next) = first;
    prev = last;
}

// Appends a zeroed node at the tail of the list that `head` and `prev` (its last node) describe,
// makes it `prev` and returns it. Ends the process with status 1 when no memory is left.
template <class Node>
Node* appendNode(Node*& head, Node*& prev) {
    Node* node = new (std::nothrow) Node{};
    if (node == nullptr)
        endProcess(1);
    appendNodes(head, prev, node, node);
    return node;
}

// Frees every node; the list is empty again.
template <class Node>
void freeNodes(Node*& head, Node*& prev) {
    while (head != nullptr) {
        Node* next = head->next;
        delete head;
        head = next;
    }
    prev = nullptr;
}

// 1: the monitor's next cycle repeats the static pass. Set at monitor start, by the BMC restart
// monitor, by a BMC request, and when something of a static pass was not known or not taken;
// cleared by the monitor.
extern std::atomic<int> static_flag;

// 1 until the end of the monitor's first cycle, and always in a one-shot run: the event handlers
// take such a pass as initialisation.
extern std::atomic<int> static_first_init;

// 1 when the BMC supports NVMe data.
extern std::atomic<int> bNVMe;

// Service status as the agent information reports it.
extern std::atomic<int> mStatus;
constexpr int STATUS_PAUSED = 0;
constexpr int STATUS_RUNNING = 1;
constexpr int STATUS_STOPPED = 2;
