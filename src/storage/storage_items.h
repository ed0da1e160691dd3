// Storage items: the records that the storage collectors put together, and what all of them do
// with these.
#pragma once

#include "system_info.h"

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// Counted lines after which a pass takes no more.
constexpr int STORAGE_LINES_MOST = 256;
// Characters of an item, the ";" at its end left out: a longer line arrives as several items.
constexpr std::size_t STORAGE_LINE_MOST = 254;
// Items of a pass, so that endless lines don't fill the memory.
constexpr std::size_t STORAGE_ITEMS_MOST = 1024;
// The drives that are tracked together: an event handler and a list of states each.
enum class drive_kind {
    onboard, // HD: onboard disks, members of software RAID volumes
    it,      // BRCM_IT_PD: behind SAS3008 controllers in IT mode
    raid,    // BRCM_IR_PD: behind SAS3008 controllers in IR mode, and behind RAID cards
};
constexpr std::size_t DRIVE_KINDS = 3;

// The records of one pass in their order, each text ended by ";"; freed with the object.
class storage_items {
  public:
    storage_items() = default;
    ~storage_items();
    storage_items(const storage_items&) = delete;
    storage_items& operator=(const storage_items&) = delete;

    // Adds a record, given without line end: one item per 255 characters, of which only the last
    // is counted and numbered. A pass that is full drops it. `state_known` false: the drive did not
    // answer, and the health in its record is no news. `certain` false: nor is that it is there, or
    // where.
    void add(std::string_view record, bool state_known = true, bool certain = true);
    bool stateKnown(std::size_t item) const {
        return m_state_known[item];
    }
    bool isCertain(std::size_t item) const {
        return m_certain[item];
    }

    // True once a limit above is met: what the pass did not come to is not known, and a collector
    // need not ask for it.
    bool full() const {
        return m_count >= m_lines_most || m_state_known.size() >= STORAGE_ITEMS_MOST;
    }
    // A full pass takes one record more.
    void allowOneMore() {
        m_lines_most = std::max(m_lines_most, m_count + 1);
    }

    // The listing of these drives failed, hung or was cut: none of them is missing for that.
    void listingUnknown(drive_kind kind) {
        m_unlisted[static_cast<std::size_t>(kind)] = true;
    }
    bool allListed(drive_kind kind) const {
        return m_count < STORAGE_LINES_MOST && !full() &&
               !m_unlisted[static_cast<std::size_t>(kind)];
    }

    // Something of this name (onboard: device path) is there and does not tell what it is: such a
    // drive is neither seen nor missing.
    void leaveOpen(std::string name) {
        m_open.insert(std::move(name));
    }
    const std::set<std::string>& open() const {
        return m_open;
    }

    list* head() const {
        return m_head;
    }
    int count() const { // complete records
        return m_count;
    }

  private:
    list* m_head = nullptr;
    list* m_prev = nullptr;
    int m_count = 0;
    std::vector<bool> m_state_known, m_certain;
    int m_lines_most = STORAGE_LINES_MOST;
    bool m_unlisted[DRIVE_KINDS] = {};
    std::set<std::string> m_open;
};
