// Storage items: the lines that a storage script prints, and what all storage collectors do with
// them.
#pragma once

#include "shell.h"
#include "system_info.h"

// Counted lines after which reading stops.
constexpr int STORAGE_LINES_MOST = 256;
// Items after which reading stops, so that a line without an end does not fill the memory.
constexpr int STORAGE_ITEMS_MOST = 1024;

// Items in the order of output, freed with the object. A line becomes one item per 255
// characters; in the item that holds its end the newline is replaced by ";" and `no` is its number
// from 0, and only such items are counted.
struct storage_items {
    list* head = nullptr;
    list* prev = nullptr;
    int count = 0;          // complete lines
    int total = 0;          // items
    bool timed_out = false; // a script passed its deadline: what it had not told yet is unknown

    storage_items() = default;
    ~storage_items() {
        freeNodes(head, prev);
    }
    storage_items(const storage_items&) = delete;
    storage_items& operator=(const storage_items&) = delete;
};

// The texts in which the collectors differ.
struct collector_texts {
    const char* label;       // of its lines in the error log
    const char* count_print; // standard output, before the two count bytes
    const char* item_print;  // standard output, before each item
    const char* count_log;   // main log
    const char* item_log;    // main log, each uploaded item
};

enum class script_result { not_started, nothing_printed, printed };

// Runs a script and appends what it prints until its deadline. At least one line is read, then
// reading goes on until the output ends or one of the limits above is reached.
script_result readItems(storage_items& items, const char* script, const char* label,
                        int deadline_s = SHELL_STORAGE_DEADLINE_S);

// Prints the count, fills the empty fields of every item in place and prints it, logs the count.
void showItems(storage_items& items, const collector_texts& texts);

// Uploads the count (parameter 198).
void uploadItemCount(const storage_items& items);

// Logs and uploads one item (parameter 199).
void uploadItem(const list& item, const collector_texts& texts);
