// StyleRepository: the process-wide registry of button styles read from "ButtonStyles.xml".
#pragma once

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/export.h"
#include "platform/xml.h"
#include "skin/button_style.h"

// What happened to each element of the last style file read, in document order (for tools and diagnostics).
struct UC_API StyleLoadEntry {
    enum Outcome {
        Loaded,          // in the repository
        DuplicateId,     // an earlier element has the same id; this one was dropped
        UnresolvedBase,  // a base name in its chain names no "style" element; dropped
        BaseLoop,        // its base chain comes back on itself; dropped
        InvalidElement,  // not a readable element; dropped
    };
    int element = 0;  // position among the root's child elements, from 0
    std::int32_t id = -1;
    std::wstring name;
    std::wstring tag;                // element name ("style" normally)
    std::vector<std::wstring> chain;  // base names followed, nearest first
    Outcome outcome = Loaded;
    std::wstring detail;  // the base name that failed to resolve or closed the loop
};

struct UC_API StyleLoadReport {
    bool fileRead = false;
    std::wstring path;
    std::wstring error;  // why the file could not be read
    std::vector<StyleLoadEntry> entries;
};

class UC_API StyleRepository {
public:
    // The instance, created and loaded from the protocol folder's "ButtonStyles.xml" on first use. When that
    // fails, "Could not load styles from file" is logged and the instance stays empty.
    static StyleRepository* GetInstance();
    // Deletes the instance and every style; a later GetInstance loads afresh.
    static void DestroyInstance();

    StyleRepository(const StyleRepository& other);
    StyleRepository& operator=(const StyleRepository& other);
    ~StyleRepository();

    // Writes every style to the protocol folder's "ButtonStyles.xml", derived ones as differences from their base.
    bool Save();

    const tButtonStyle* GetStyle(int id) const;
    // First style in ascending id order whose name equals `name` (case-sensitive); null for none or null.
    const tButtonStyle* GetStyle(const wchar_t* name) const;
    // Stores a copy of `style`. With `asNew` it gets the lowest free id from 0 and derives from style 0.
    // An existing record of that id is overwritten in place, so pointers handed out see the new values.
    void UpdateStyle(tButtonStyle& style, bool asNew);
    std::vector<const tButtonStyle*> GetAllStyles() const;

    // Replaces every style by those of another file or of a parsed document (tools, tests). Pointers handed
    // out earlier become invalid.
    bool LoadFile(const std::wstring& path);
    bool LoadDocument(const zelXMLFile& file);
    // Writes every style to `path` / into `file` as Save does.
    bool SaveFile(const std::wstring& path) const;
    bool StoreDocument(zelXMLFile& file) const;

    // Outcome of every element of the last read.
    const StyleLoadReport& GetLoadReport() const { return m_report; }

private:
    StyleRepository();
    bool Load();
    bool LoadStyle(tButtonStyle* style, zelXMLFile& file, const zelXMLNode& element);
    bool LoadStyle(tButtonStyle* style, const zelXMLNode& element, StyleLoadEntry& entry);
    void RemoveAll();
    void IndexDocument(const zelXMLFile& file);
    void RebuildNameIndex() const;

    static StyleRepository* m_instance;

    std::map<std::int32_t, std::unique_ptr<tButtonStyle>> m_styles;
    // Base lookup of the current read: the first "style" element in document order with each "name".
    std::unordered_map<std::wstring, zelXMLNode> m_baseIndex;
    // Name lookups: lowest id per name, rebuilt after a change.
    mutable std::unordered_map<std::wstring, const tButtonStyle*> m_byName;
    mutable bool m_byNameValid = false;
    // Bases resolved or failed during the current read, by the name they were reached by: a chain is walked
    // once however many styles derive from it.
    struct ResolvedBase {
        tButtonStyle style;
        std::vector<std::wstring> chain;  // its own base names, nearest first
    };
    std::unordered_map<std::wstring, ResolvedBase> m_resolvedBases;
    std::unordered_map<std::wstring, std::pair<StyleLoadEntry::Outcome, std::wstring>> m_failedBases;
    StyleLoadReport m_report;
};
