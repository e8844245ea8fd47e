// CResizer: keeps registered child controls anchored to their parent's edges when the parent is resized.
#pragma once

#include <windows.h>

#include <vector>

#include "platform/export.h"
#include "ui/geometry.h"

class UC_API CResizer {
public:
    // One control of a layout table.
    struct Entry {
        UINT id;
        uc::ui::Anchors anchors;
    };

    // Remembers `parent`'s client size now as the size the controls were laid out for.
    void Init(HWND parent);
    // Registers a child (by id) at its current place; false when the parent has no such child or Init was not called.
    bool Add(UINT id, const uc::ui::Anchors& anchors);
    // Registers a whole table; returns the number of entries that were added.
    int Add(const Entry* entries, int count);
    // Moves every registered control for the parent's current client size. Does nothing before Init.
    void Move() const;
    std::size_t Count() const { return m_items.size(); }

private:
    struct Item {
        HWND hwnd;
        uc::ui::Rect original;
        uc::ui::Anchors anchors;
    };
    HWND m_parent = nullptr;
    int m_w = 0, m_h = 0;
    std::vector<Item> m_items;
};
