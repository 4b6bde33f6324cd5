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
        m_vOrder.reserve(items.size());
        for (std::uint32_t i = 0; i < items.size(); ++i) {
            m_vOrder.push_back(i);
        }
        const auto isLess = [&](std::uint32_t a, std::uint32_t b) { return items[a].id < items[b].id; };
        if (!std::is_sorted(m_vOrder.begin(), m_vOrder.end(), isLess)) {
            std::stable_sort(m_vOrder.begin(), m_vOrder.end(), isLess);
        }
        m_bIsDense = !items.empty();
        for (std::size_t place = 0; m_bIsDense && place < items.size(); ++place) {
            m_bIsDense = at(place).id == std::uint64_t{at(0).id} + place;
        }
    }

    /// The first item with this identifier, in the order of the list; null if there is none.
    const Item* first(std::uint32_t id) const {
        if (m_bIsDense) {
            return only(id);
        }
        const auto place = std::lower_bound(m_vOrder.begin(), m_vOrder.end(), id,
                                            [&](std::uint32_t i, std::uint32_t key) { return m_items[i].id < key; });
        return place != m_vOrder.end() && m_items[*place].id == id ? &m_items[*place] : nullptr;
    }

    /// The last item with this identifier: the one that counts.
    const Item* last(std::uint32_t id) const {
        if (m_bIsDense) {
            return only(id);
        }
        const auto place = std::upper_bound(m_vOrder.begin(), m_vOrder.end(), id,
                                            [&](std::uint32_t key, std::uint32_t i) { return key < m_items[i].id; });
        return place != m_vOrder.begin() && m_items[*(place - 1)].id == id ? &m_items[*(place - 1)] : nullptr;
    }

    /// Whether an item of the list is not the first with its identifier.
    bool isRepeated(const Item& item) const { return first(item.id) != &item; }

private:
    const Item& at(std::size_t place) const { return m_items[m_vOrder[place]]; }

    const Item* only(std::uint32_t id) const {
        const std::size_t place = std::size_t{id} - at(0).id;  // wraps, far beyond the end, below the first
        return place < m_vOrder.size() ? &at(place) : nullptr;
    }

    const std::vector<Item>& m_items;
    std::vector<std::uint32_t> m_vOrder;  // places in the list, by identifier
    bool m_bIsDense = false;              // 5, 6, 7 ..., each once: as most programs number, which needs no search
};

}  // namespace Zantrix::Cli
