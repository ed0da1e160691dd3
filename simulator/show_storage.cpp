#include "show_storage.h"

#include "core.h"
#include "records.h"

namespace bmcsim {

struct StorageTable {
    const char* title;
    std::vector<const char*> tags;
    std::vector<const char*> columns; // headings, as the record kinds name their fields
};

static const std::vector<StorageTable>& storageTableKinds() {
    static const std::vector<StorageTable> tables = {
        {"Disks",
         {"HD"},
         {"device", "health", "index", "type", "GiB", "model", "serial", "firmware", "interface",
          "temperature", "rpm", "controller"}},
        {"Partitions", {"PT"}, {"device", "percent", "used", "available", "total", "block size"}},
        {"MegaRAID drives", {"LSI"}, {"device", "DID", "health", "slot", "serial", "firmware"}},
        {"RSTe volumes", {"Logical"}, {"volume", "name", "state", "level", "disks", "members"}},
        {"Controllers",
         {"BRCM_IR_CNTL", "BRCM_II_CNTL"},
         {"tag", "mapping", "number", "type", "BIOS", "firmware", "channel"}},
        {"Volumes",
         {"BRCM_IR_VD"},
         {"mapping", "name", "health", "detail", "level", "size", "members"}},
        {"Controller drives",
         {"BRCM_IR_PD", "BRCM_IT_PD"},
         {"tag", "location", "health", "state", "type", "size", "model", "serial", "firmware"}},
    };
    return tables;
}

static bool hasTag(const StorageTable& table, const std::string& tag) {
    for (const char* candidate : table.tags)
        if (tag == candidate)
            return true;
    return false;
}

static Row storageRow(const StorageTable& table, const RecordKind& kind, const std::string& item) {
    const std::vector<std::string> fields = storageFields(item);
    Row row;
    for (const std::string column : table.columns) {
        std::string cell = "-";
        for (size_t i = 0; i < fields.size(); i++)
            if (column == kind.names[i])
                cell = escapeText(fields[i]);
        row.push_back(cell);
    }
    return row;
}

Lines storageTables(const std::vector<std::string>& items) {
    Lines lines;
    for (const StorageTable& table : storageTableKinds()) {
        std::vector<Row> rows;
        for (const std::string& item : items) {
            const RecordKind* kind = storageKind(item);
            if (kind != nullptr && hasTag(table, kind->tag))
                rows.push_back(storageRow(table, *kind, item));
        }
        const Lines some = tableLines(Row(table.columns.begin(), table.columns.end()), rows);
        if (!some.empty())
            lines.push_back(std::string("  ") + table.title);
        for (const std::string& line : some)
            lines.push_back("  " + line);
    }
    for (const std::string& item : items)
        if (storageKind(item) == nullptr)
            lines.push_back("  unreadable: " + escapeText(item));
    return lines;
}

Lines nvmeTable(const std::vector<std::string>& items) {
    std::vector<Row> rows;
    for (const std::string& item : items) {
        Row values;
        for (const std::string& field : splitText(escapeText(item), ";"))
            values.push_back(field.size() > 3 ? field.substr(3) : "");
        values.resize(19);
        rows.push_back({values[0], values[1] == "0" ? "OK" : "warning " + values[1], values[2],
                        values[3], values[4], values[5], values[12], values[11], values[14],
                        values[15], values[17], values[16], values[18]});
    }
    return tableLines({"device", "health", "temperature", "spare", "threshold", "used", "hours",
                       "power cycles", "media errors", "log entries", "KiB", "model", "serial"},
                      rows);
}

} // namespace bmcsim
