#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace Zantrix::Cli {

/// Finds items by their member `id`, in a time that no choice of identifiers makes worse than logarithmic.
template <typename Item>
class ById {
public:
    /// @param items  must outlive this, unchanged; less than 2^32 of them
    explicit ById(const std::vector<Item>& items) : m_items(items) {
        std::uint64_t next = items.empty() ? 0 : items.front().id;
        m_bIsCounted = std::all_of(items.begin(), items.end(), [&](const Item& item) { return item.id == next++; });
        if (m_bIsCounted) {
            return;
        }
        m_vOrder.reserve(items.size());
        for (std::uint32_t i = 0; i < items.size(); ++i) {
            m_vOrder.push_back(i);
        }
        std::stable_sort(m_vOrder.begin(), m_vOrder.end(),
                         [&](std::uint32_t a, std::uint32_t b) { return items[a].id < items[b].id; });
    }

    /// The first item with this identifier, in the order of the list; null if there is none.
    const Item* first(std::uint32_t id) const {
        if (m_bIsCounted) {
            return only(id);
        }
        const auto place = std::lower_bound(m_vOrder.begin(), m_vOrder.end(), id,
                                            [&](std::uint32_t i, std::uint32_t key) { return m_items[i].id < key; });
        return place != m_vOrder.end() && m_items[*place].id == id ? &m_items[*place] : nullptr;
    }

    /// The last item with this identifier: the one that counts.
    const Item* last(std::uint32_t id) const {
        if (m_bIsCounted) {
            return only(id);
        }
        const auto place = std::upper_bound(m_vOrder.begin(), m_vOrder.end(), id,
                                            [&](std::uint32_t key, std::uint32_t i) { return key < m_items[i].id; });
        return place != m_vOrder.begin() && m_items[*(place - 1)].id == id ? &m_items[*(place - 1)] : nullptr;
    }

    /// Whether an item of the list is not the first with its identifier.
    bool isRepeated(const Item& item) const { return first(item.id) != &item; }

private:
    const Item* only(std::uint32_t id) const {
        const bool isBefore = m_items.empty() || id < m_items.front().id;
        const std::size_t place = isBefore ? m_items.size() : id - m_items.front().id;
        return place < m_items.size() ? &m_items[place] : nullptr;
    }

    const std::vector<Item>& m_items;
    bool m_bIsCounted = false;            // 5, 6, 7 ... in the order of the list, as most programs write: no search
    std::vector<std::uint32_t> m_vOrder;  // otherwise, places in the list, by identifier
};

}  // namespace Zantrix::Cli
