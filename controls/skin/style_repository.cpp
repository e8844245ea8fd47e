// StyleRepository: loads styles with their base chains resolved, hands out lookups, writes differences back.
#include "skin/style_repository.h"

#include <unordered_set>
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
    zelXMLFile file;
    if (!file.open(path)) {
        m_report = StyleLoadReport();
        m_report.path = path;
        m_report.error = file.getLastError();
        return false;
    }
    const bool ok = LoadDocument(file);
    m_report.path = path;
    return ok;
}

void StyleRepository::IndexDocument(const zelXMLFile& file) {
    // One walk over the whole document in document order; the first element of each name is kept, exactly as a
    // search for the first "style" element with that "name" would find it.
    m_baseIndex.clear();
    std::vector<zelXMLNode> stack;
    stack.push_back(file.getRootElement());
    while (!stack.empty()) {
        zelXMLNode& top = stack.back();
        if (!top.isValid()) {
            stack.pop_back();
            if (!stack.empty()) ++stack.back();
            continue;
        }
        if (top.hasName(L"style") && top.hasAttribute(L"name"))
            m_baseIndex.emplace(top.getAttribute(L"name"), top);
        zelXMLNode child = top.getFirstChild();
        if (child.isValid())
            stack.push_back(std::move(child));
        else if (stack.size() == 1)
            stack.pop_back();  // the root has no siblings to visit
        else
            ++top;
    }
}

bool StyleRepository::LoadDocument(const zelXMLFile& file) {
    RemoveAll();
    m_report = StyleLoadReport();
    if (!file.isOpen() || !file.getRootElement().isValid()) {
        m_report.error = L"no document";
        return false;
    }
    m_report.fileRead = true;
    m_resolvedBases.clear();
    m_failedBases.clear();
    IndexDocument(file);

    int position = 0;
    for (zelXMLNode child = file.getRootElement().getFirstChild(); child.isValid(); ++child, ++position) {
        StyleLoadEntry entry;
        entry.element = position;
        entry.tag = child.getName();
        auto style = std::make_unique<tButtonStyle>();
        if (LoadStyle(style.get(), child, entry)) {
            entry.id = style->id;
            entry.name = style->name;
            // The first style of an id wins; a later one is dropped.
            if (!m_styles.try_emplace(style->id, std::move(style)).second) entry.outcome = StyleLoadEntry::DuplicateId;
        } else {
            entry.name = child.getAttribute(L"name");
            entry.id = child.getAttributeInt(L"id", -1);
        }
        m_report.entries.push_back(std::move(entry));
    }
    m_baseIndex.clear();
    m_resolvedBases.clear();
    m_failedBases.clear();
    return true;
}

bool StyleRepository::LoadStyle(tButtonStyle* style, zelXMLFile& file, const zelXMLNode& element) {
    StyleLoadEntry entry;
    if (m_baseIndex.empty()) IndexDocument(file);
    return LoadStyle(style, element, entry);
}

bool StyleRepository::LoadStyle(tButtonStyle* style, const zelXMLNode& element, StyleLoadEntry& entry) {
    if (!style || !element.isValid()) {
        entry.outcome = StyleLoadEntry::InvalidElement;
        return false;
    }
    // Walk up the base chain to the first base already resolved during this read (or to a style without a
    // base), then read the elements top-down, each over what the ones above it left.
    std::vector<std::pair<std::wstring, zelXMLNode>> chain;  // (name it was reached by, element), nearest first
    std::unordered_set<std::wstring> seen;
    const tButtonStyle* start = nullptr;
    std::wstring base = element.getAttribute(L"basename");
    while (!base.empty()) {
        entry.chain.push_back(base);
        if (auto r = m_resolvedBases.find(base); r != m_resolvedBases.end()) {
            start = &r->second.style;
            entry.chain.insert(entry.chain.end(), r->second.chain.begin(), r->second.chain.end());
            break;
        }
        StyleLoadEntry::Outcome failure = StyleLoadEntry::Loaded;
        if (auto f = m_failedBases.find(base); f != m_failedBases.end()) {
            failure = f->second.first;
            entry.detail = f->second.second;
        } else if (!seen.insert(base).second) {
            failure = StyleLoadEntry::BaseLoop;
            entry.detail = base;
        } else if (auto it = m_baseIndex.find(base); it == m_baseIndex.end()) {
            failure = StyleLoadEntry::UnresolvedBase;
            entry.detail = base;
        } else {
            chain.emplace_back(base, it->second);
            base = it->second.getAttribute(L"basename");
            continue;
        }
        // Every base on this walk fails the same way for whoever derives from it later.
        for (const auto& link : chain) m_failedBases.emplace(link.first, std::make_pair(failure, entry.detail));
        entry.outcome = failure;
        if (failure == StyleLoadEntry::BaseLoop)
            Log(__LINE__, zelLogger::Failure)(L"Style \"%s\" dropped: its base chain loops at \"%s\"",
                                              element.getAttribute(L"name").c_str(), entry.detail.c_str());
        return false;
    }

    if (start) *style = *start;
    for (std::size_t i = chain.size(); i-- > 0;) {
        style->Load(chain[i].second);
        ResolvedBase& r = m_resolvedBases[chain[i].first];
        r.style = *style;
        r.chain.clear();
        for (std::size_t j = i + 1; j < entry.chain.size(); ++j) r.chain.push_back(entry.chain[j]);
    }
    return style->Load(element);
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
