// CResizer: records controls' original places and moves them with DeferWindowPos.
#include "ui/win/resizer.h"

void CResizer::Init(HWND parent) {
    m_parent = parent;
    m_items.clear();
    RECT r{};
    ::GetClientRect(parent, &r);
    m_w = r.right;
    m_h = r.bottom;
}

bool CResizer::Add(UINT id, const uc::ui::Anchors& anchors) {
    HWND child = m_parent ? ::GetDlgItem(m_parent, static_cast<int>(id)) : nullptr;
    if (!child) return false;
    RECT r{};
    ::GetWindowRect(child, &r);
    ::MapWindowPoints(HWND_DESKTOP, m_parent, reinterpret_cast<POINT*>(&r), 2);
    m_items.push_back({child, {r.left, r.top, r.right, r.bottom}, anchors});
    return true;
}

int CResizer::Add(const Entry* entries, int count) {
    int added = 0;
    for (int i = 0; i < count; ++i) added += Add(entries[i].id, entries[i].anchors) ? 1 : 0;
    return added;
}

void CResizer::Move() const {
    if (!m_parent || m_items.empty()) return;
    RECT client{};
    ::GetClientRect(m_parent, &client);
    HDWP batch = ::BeginDeferWindowPos(static_cast<int>(m_items.size()));
    for (const Item& item : m_items) {
        if (!::IsWindow(item.hwnd)) continue;
        const uc::ui::Rect r = uc::ui::Relayout(item.original, m_w, m_h, client.right, client.bottom, item.anchors);
        const UINT flags = SWP_NOZORDER | SWP_NOACTIVATE;
        if (batch) {
            batch = ::DeferWindowPos(batch, item.hwnd, nullptr, r.left, r.top, r.Width(), r.Height(), flags);
        } else {
            ::SetWindowPos(item.hwnd, nullptr, r.left, r.top, r.Width(), r.Height(), flags);
        }
    }
    if (batch) ::EndDeferWindowPos(batch);
}
