// StyleRepository: loads styles with their base chains resolved, hands out lookups, writes differences back.
#include "skin/style_repository.h"

#include <algorithm>
#include <deque>
#include <new>
#include <utility>

#include "platform/logger.h"
#include "platform/paths.h"

namespace {
const wchar_t kStyleFile[] = L"ButtonStyles.xml";

// Log lines of this class carry its name as their source.
zelLogger::zelLogHelper Log(int line, int type) { return zelLogger::zelLogHelper("StyleRepository", line, type); }
}  // namespace

StyleRepository* StyleRepository::m_instance = nullptr;

StyleRepository* StyleRepository::GetInstance() {
    if (m_instance) return m_instance;
    m_instance = new StyleRepository();
    if (!m_instance->Load()) Log(__LINE__, zelLogger::Failure)(L"Could not load styles from file");
    return m_instance;
}

void StyleRepository::DestroyInstance() {
    delete m_instance;
    m_instance = nullptr;
}

StyleRepository::StyleRepository() = default;
StyleRepository::~StyleRepository() = default;

StyleRepository::StyleRepository(const StyleRepository& other) : m_report(other.m_report) {
    for (const auto& [id, style] : other.m_styles) m_styles.emplace(id, std::make_unique<tButtonStyle>(*style));
}

StyleRepository& StyleRepository::operator=(const StyleRepository& other) {
    if (this == &other) return *this;
    RemoveAll();
    for (const auto& [id, style] : other.m_styles) m_styles.emplace(id, std::make_unique<tButtonStyle>(*style));
    m_report = other.m_report;
    return *this;
}

void StyleRepository::RemoveAll() {
    m_styles.clear();
    m_byName.clear();
    m_byNameValid = false;
}

bool StyleRepository::Load() { return LoadFile(utilsExam::GetProtocolFile(kStyleFile)); }

bool StyleRepository::LoadFile(const std::wstring& path) {
    RemoveAll();
    m_report = StyleLoadReport();
    m_report.path = path;
    try {
        zelXMLFile file;
        if (!file.open(path)) {
            m_report.error = file.getLastError();
            m_report.errorLine = file.getErrorLine();
            m_report.errorColumn = file.getErrorColumn();
            return false;
        }
        const bool ok = LoadDocument(file);
        m_report.path = path;
        return ok;
    } catch (const std::bad_alloc&) {
        RemoveAll();
        m_report = StyleLoadReport();
        m_report.path = path;
        m_report.error = L"not enough memory to read the style file";
        return false;
    }
}

// The base chains of one document. Every element that can serve as a base (the first "style" element of each
// name, anywhere in the document) is a node, read once: its values are its base's values with its own element read
// over them. Chains are walked without recursion and recorded as shared report links, so a chain of any depth
// costs time and memory in proportion to its length, not to its square.
struct StyleRepository::Resolver {
    struct Node {
        zelXMLNode element;
        const std::wstring* name = nullptr;  // the key it is found by
        std::wstring basename;
        enum State : unsigned char { Unvisited, Visiting, Done } state = Unvisited;
        StyleLoadEntry::Outcome outcome = StyleLoadEntry::Loaded;
        int base = -1;        // node of its base, once walked (-1: none, or a name no "style" element has)
        int link = -1;        // report link of this node's name
        int detailLink = -1;  // for a failure: the link whose name is reported as its cause
        std::unique_ptr<tButtonStyle> owned;  // resolved values, until handed to the repository
        const tButtonStyle* style = nullptr;  // resolved values wherever they live
    };

    explicit Resolver(StyleLoadReport& report) : links(report.links) {}

    // Every "style" element in document order; the first of each name is a node, as a search for the first
    // "style" element with that "name" would find it. Also notes, for each "style" child of the root in turn,
    // which node it is (-1 for none).
    void Index(const zelXMLFile& file) {
        file.forEachElementNamed(L"style", [this](const zelXMLNode& element, int depth) {
            bool named = false;
            std::wstring name, basename;
            element.forEachAttribute([&](const zelXMLAttribute& a) {
                switch (a.oneOf({L"name", L"basename"})) {
                case 0:
                    named = true;
                    name = a.value();
                    break;
                case 1: basename = a.value(); break;
                }
            });
            int node = -1;
            if (named) {
                auto [it, added] = byName.try_emplace(std::move(name), static_cast<int>(nodes.size()));
                if (added) {
                    node = it->second;
                    nodes.emplace_back();
                    nodes.back().element = element;
                    nodes.back().name = &it->first;
                    nodes.back().basename = std::move(basename);
                }
            }
            if (depth == 1) styleChildren.push_back(node);
        });
    }

    int NewLink(const std::wstring& name, int next, std::size_t depth) {
        links.push_back({name, next, depth});
        return static_cast<int>(links.size()) - 1;
    }

    // The link of a base name no "style" element has (one per name).
    int MissingLink(const std::wstring& name) {
        auto [it, added] = missing.try_emplace(name, -1);
        if (added) it->second = NewLink(name, -1, 1);
        return it->second;
    }

    // Resolves `start` and every base it needs: walk up to a node already resolved, a style without a base, a
    // name that resolves to nothing or a loop, then settle the nodes walked from the top down.
    void Resolve(int start) {
        path.clear();
        int n = start, above = -1, missingLink = -1;
        std::size_t loopAt = path.max_size();
        for (;;) {
            Node& node = nodes[n];
            if (node.state == Node::Done) {
                above = n;
                break;
            }
            if (node.state == Node::Visiting) {
                for (loopAt = 0; path[loopAt] != n; ++loopAt) {}
                break;
            }
            node.state = Node::Visiting;
            path.push_back(n);
            if (node.basename.empty()) break;
            auto it = byName.find(node.basename);
            if (it == byName.end()) {
                missingLink = MissingLink(node.basename);
                break;
            }
            n = node.base = it->second;
        }
        std::size_t settled = path.size();
        if (loopAt < path.size()) {
            // Each name of a loop leads round it and back to itself: the loop's length plus one name.
            const std::size_t depth = path.size() - loopAt + 1;
            for (std::size_t i = loopAt; i < path.size(); ++i) nodes[path[i]].link = NewLink(*nodes[path[i]].name, -1, depth);
            for (std::size_t i = loopAt; i < path.size(); ++i) {
                Node& node = nodes[path[i]];
                links[node.link].next = nodes[path[i + 1 < path.size() ? i + 1 : loopAt]].link;
                node.outcome = StyleLoadEntry::BaseLoop;
                node.detailLink = node.link;
                node.state = Node::Done;
            }
            settled = loopAt;
        }
        for (std::size_t i = settled; i-- > 0;) {
            Node& node = nodes[path[i]];
            const int from = i + 1 < path.size() ? path[i + 1] : above;
            int next = -1;
            const tButtonStyle* base = nullptr;
            if (from >= 0) {
                const Node& b = nodes[from];
                next = b.link;
                node.outcome = b.outcome;
                node.detailLink = b.detailLink;
                base = b.style;
            } else if (missingLink >= 0) {
                next = missingLink;
                node.outcome = StyleLoadEntry::UnresolvedBase;
                node.detailLink = missingLink;
            }
            node.link = NewLink(*node.name, next, 1 + (next >= 0 ? links[next].depth : 0));
            if (node.outcome == StyleLoadEntry::Loaded) {
                node.owned = base ? std::make_unique<tButtonStyle>(*base) : std::make_unique<tButtonStyle>();
                node.owned->Load(node.element);
                node.style = node.owned.get();
            }
            node.state = Node::Done;
        }
    }

    // The resolved base named `basename` for `entry` (null for none); false, with the entry's outcome, chain and
    // detail set, when the chain fails.
    bool Base(const std::wstring& basename, StyleLoadEntry& entry, const tButtonStyle*& base) {
        base = nullptr;
        if (basename.empty()) return true;
        auto it = byName.find(basename);
        if (it == byName.end()) {
            entry.chain = MissingLink(basename);
            entry.depth = 1;
            entry.outcome = StyleLoadEntry::UnresolvedBase;
            entry.detail = basename;
            return false;
        }
        Resolve(it->second);
        const Node& node = nodes[it->second];
        entry.chain = node.link;
        entry.depth = links[node.link].depth;
        if (node.outcome != StyleLoadEntry::Loaded) {
            entry.outcome = node.outcome;
            entry.detail = links[node.detailLink].name;
            return false;
        }
        base = node.style;
        return true;
    }

    // The entry of a root child that is node `n` (its base found through the node, without another search);
    // false when its chain fails.
    bool FromNode(int n, StyleLoadEntry& entry) {
        Resolve(n);
        const Node& node = nodes[n];
        entry.chain = links[node.link].next;
        entry.depth = entry.chain >= 0 ? links[entry.chain].depth : 0;
        entry.outcome = node.outcome;
        if (node.outcome == StyleLoadEntry::Loaded) return true;
        entry.detail = links[node.base >= 0 ? nodes[node.base].detailLink : entry.chain].name;
        return false;
    }

    std::vector<StyleLoadReport::Link>& links;
    std::deque<Node> nodes;  // a deque: adding a node moves none of the others
    std::unordered_map<std::wstring, int> byName;
    std::unordered_map<std::wstring, int> missing;
    std::vector<int> styleChildren;  // node of each "style" child of the root, -1 for those that are not nodes
    std::vector<int> path;
};

bool StyleRepository::LoadDocument(const zelXMLFile& file) {
    try {
        return ReadDocument(file);
    } catch (const std::bad_alloc&) {
        RemoveAll();
        m_report = StyleLoadReport();
        m_report.error = L"not enough memory to read the style file";
        return false;
    }
}

bool StyleRepository::ReadDocument(const zelXMLFile& file) {
    RemoveAll();
    m_report = StyleLoadReport();
    if (!file.isOpen() || !file.getRootElement().isValid()) {
        m_report.error = L"no document";
        return false;
    }
    m_report.fileRead = true;

    struct Loaded {
        std::int32_t id;
        std::size_t entry;
        std::unique_ptr<tButtonStyle> style;
    };
    // Declared before the resolver, which may point into them: they outlive it.
    std::vector<Loaded> loaded;
    Resolver resolver(m_report);
    resolver.Index(file);
    int position = 0;
    std::size_t styleChild = 0;
    // Grown once: every reallocation of a large block makes the allocator sweep its small free blocks.
    m_report.entries.reserve(resolver.styleChildren.size());
    m_report.links.reserve(2 * resolver.nodes.size());
    loaded.reserve(resolver.styleChildren.size());
    for (zelXMLNode child = file.getRootElement().getFirstChild(); child.isValid(); ++child, ++position) {
        StyleLoadEntry entry;
        entry.element = position;
        entry.tag = child.getName();
        std::unique_ptr<tButtonStyle> style;
        const int node = entry.tag == L"style" && styleChild < resolver.styleChildren.size()
                             ? resolver.styleChildren[styleChild++]
                             : -1;
        if (node >= 0) {
            if (resolver.FromNode(node, entry)) style = std::move(resolver.nodes[static_cast<std::size_t>(node)].owned);
        } else {
            std::wstring basename;
            child.forEachAttribute([&](const zelXMLAttribute& a) {
                if (a.is(L"basename")) basename = a.value();
            });
            const tButtonStyle* base = nullptr;
            if (resolver.Base(basename, entry, base)) {
                style = base ? std::make_unique<tButtonStyle>(*base) : std::make_unique<tButtonStyle>();
                style->Load(child);
            }
        }
        if (style) {
            entry.id = style->id;
            entry.name = style->name;
            loaded.push_back({style->id, m_report.entries.size(), std::move(style)});
        } else {
            child.forEachAttribute([&](const zelXMLAttribute& a) {
                if (a.is(L"name")) entry.name = a.value();
                else if (a.is(L"id")) a.toInt(entry.id);
            });
            if (entry.outcome == StyleLoadEntry::BaseLoop)
                Log(__LINE__, zelLogger::Failure)(L"Style \"%s\" dropped: its base chain loops at \"%s\"",
                                                  entry.name.c_str(), entry.detail.c_str());
        }
        m_report.entries.push_back(std::move(entry));
    }
    // Into the map in ascending id order, each at its end: no search through the tree per style. The first style
    // of an id in the file wins; a later one is dropped (it may still have served as a base).
    std::stable_sort(loaded.begin(), loaded.end(), [](const Loaded& a, const Loaded& b) { return a.id < b.id; });
    for (Loaded& l : loaded) {
        if (!m_styles.empty() && std::prev(m_styles.end())->first == l.id) {
            m_report.entries[l.entry].outcome = StyleLoadEntry::DuplicateId;
            continue;
        }
        m_styles.emplace_hint(m_styles.end(), l.id, std::move(l.style));
    }
    return true;
}

bool StyleRepository::LoadStyle(tButtonStyle* style, zelXMLFile& file, const zelXMLNode& element) {
    if (!style || !element.isValid()) return false;
    StyleLoadReport scratch;
    Resolver resolver(scratch);
    resolver.Index(file);
    StyleLoadEntry entry;
    const tButtonStyle* base = nullptr;
    if (!resolver.Base(element.getAttribute(L"basename"), entry, base)) return false;
    if (base) *style = *base;
    return style->Load(element);
}

std::vector<std::wstring> StyleLoadReport::Chain(const StyleLoadEntry& entry, std::size_t limit) const {
    std::vector<std::wstring> names;
    // A looping chain ends with the first name seen a second time: its depth says where.
    for (int l = entry.chain; l >= 0 && names.size() < std::min(limit, entry.depth); l = links[static_cast<std::size_t>(l)].next)
        names.push_back(links[static_cast<std::size_t>(l)].name);
    return names;
}

bool StyleRepository::Save() { return SaveFile(utilsExam::GetProtocolFile(kStyleFile)); }

bool StyleRepository::SaveFile(const std::wstring& path) const {
    zelXMLFile file;
    return StoreDocument(file) && file.save(path);
}

bool StyleRepository::StoreDocument(zelXMLFile& file) const {
    if (!file.newDocument(L"Styles")) return false;
    const zelXMLNode root = file.getRootElement();
    for (const auto& [id, style] : m_styles) {
        const tButtonStyle* base = style->basename.empty() ? nullptr : GetStyle(style->basename.c_str());
        // A style named as its own base is written whole: a difference from itself would be empty.
        if (base == style.get()) base = nullptr;
        style->Store(root.createElement(L"style"), base);
    }
    return true;
}

const tButtonStyle* StyleRepository::GetStyle(int id) const {
    auto it = m_styles.find(id);
    return it == m_styles.end() ? nullptr : it->second.get();
}

void StyleRepository::RebuildNameIndex() const {
    m_byName.clear();
    // Ascending ids: the first insertion of a name is its lowest id.
    for (const auto& [id, style] : m_styles) m_byName.emplace(style->name, style.get());
    m_byNameValid = true;
}

const tButtonStyle* StyleRepository::GetStyle(const wchar_t* name) const {
    if (!name) return nullptr;
    if (!m_byNameValid) RebuildNameIndex();
    auto it = m_byName.find(name);
    return it == m_byName.end() ? nullptr : it->second;
}

void StyleRepository::UpdateStyle(tButtonStyle& style, bool asNew) {
    if (asNew) {
        style.id = 0;
        while (GetStyle(style.id)) ++style.id;
        // New styles always derive from style 0.
        if (const tButtonStyle* first = GetStyle(0)) style.basename = first->name;
    }
    m_byNameValid = false;
    if (auto it = m_styles.find(style.id); it != m_styles.end())
        *it->second = style;
    else
        m_styles.emplace(style.id, std::make_unique<tButtonStyle>(style));
}

std::vector<const tButtonStyle*> StyleRepository::GetAllStyles() const {
    std::vector<const tButtonStyle*> all;
    all.reserve(m_styles.size());
    for (const auto& [id, style] : m_styles) all.push_back(style.get());
    return all;
}
