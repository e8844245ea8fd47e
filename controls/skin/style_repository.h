// StyleRepository: the process-wide registry of button styles read from "ButtonStyles.xml".
#pragma once

#include <cstddef>
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
    std::wstring tag;  // element name ("style" normally)
    // The base names followed, nearest first, as an index into StyleLoadReport::links (-1: no base); see
    // StyleLoadReport::Chain. `depth` is how many names that chain holds.
    int chain = -1;
    std::size_t depth = 0;
    Outcome outcome = Loaded;
    std::wstring detail;  // the base name that failed to resolve or closed the loop
};

struct UC_API StyleLoadReport {
    bool fileRead = false;
    std::wstring path;
    std::wstring error;  // why the file could not be read
    int errorLine = 0;    // where the file's XML fault is, from 1 (0: no position)
    int errorColumn = 0;
    std::vector<StyleLoadEntry> entries;

    // Base chains as links shared by every chain that runs through them, so a report stays linear in the file's
    // size however deep the chains are: a base name, the link of its own base (-1 at the end) and the number of
    // names from here to the end. A chain that loops ends with the first name seen twice.
    struct Link {
        std::wstring name;
        int next = -1;
        std::size_t depth = 1;
    };
    std::vector<Link> links;

    // The base names of an entry's chain, nearest first, at most `limit` of them.
    std::vector<std::wstring> Chain(const StyleLoadEntry& entry, std::size_t limit = static_cast<std::size_t>(-1)) const;
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
    // out earlier become invalid. Time and memory are linear in the file's size whatever the shape of its base
    // chains; a file too large for memory fails with the reason in the report rather than throwing.
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
    bool ReadDocument(const zelXMLFile& file);
    void RemoveAll();
    void RebuildNameIndex() const;

    struct Resolver;  // base chains of one document, resolved once each

    static StyleRepository* m_instance;

    std::map<std::int32_t, std::unique_ptr<tButtonStyle>> m_styles;
    // Name lookups: lowest id per name, rebuilt after a change.
    mutable std::unordered_map<std::wstring, const tButtonStyle*> m_byName;
    mutable bool m_byNameValid = false;
    StyleLoadReport m_report;
};
