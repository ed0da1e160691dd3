// How a collected value or list is told: to standard output, to the main log and to the BMC.
#pragma once

#include "bmc/parameter_upload.h"
#include "system_info.h"

#include <functional>
#include <string>

struct value_report {
    const char* printed; // label on standard output, before " : "
    const char* logged;  // label in the main log
    BYTE parm;
};

// Prints, logs and uploads one value.
void reportValue(const value_report& how, const std::string& text);

struct list_report {
    const char* count_printed; // format of the count line, given count / 255 and count mod 255
    const char* item_printed;  // standard output, before each item
    const char* count_logged;  // label in the main log; null: the count is not logged
    const char* item_logged;   // label in the main log
    BYTE count_parm;
    BYTE item_parm;
    bool numbered; // an item is shown with its number, "(%d)", before its text
    void (*normalise)(
        std::string& text); // fills the empty fields of an item; null: nothing to fill
};

// Prints the count, normalises each text in place and prints it, logs the count.
void showList(const list_report& how, list* head, int count);

// Uploads the count, then tells each record: to `handler`, if there is one, with its place in the
// list; to the main log; to the BMC. Without a record nothing is done.
void uploadList(const list_report& how, const list* head, int count,
                const std::function<void(const list& item, std::size_t place)>& handler = nullptr);
