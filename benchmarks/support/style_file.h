// Generates the benchmark style file: 10,000 styles, a fifth derived through base chains up to depth 5.
#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "platform/text.h"

namespace uc::bench {

constexpr int kStyles = 10000;
constexpr int kDerived = kStyles / 5;
constexpr int kMaxDepth = 5;

inline std::string FullStyle(int id, const std::string& name) {
    const int c = id % 200;
    auto colour = [&](const char* tag, int shift) {
        return "<" + std::string(tag) + " a=\"255\" r=\"" + std::to_string((c + shift) % 256) + "\" g=\"" +
               std::to_string((c * 3 + shift) % 256) + "\" b=\"" + std::to_string((c * 7 + shift) % 256) + "\"/>";
    };
    std::string s = "<style id=\"" + std::to_string(id) + "\" name=\"" + name + "\">";
    s += "<shape shape=\"" + std::to_string(id % 8) + "\" radius=\"12.00\" borderRatio=\"0.15\"/>";
    s += "<font name=\"Tahoma\" size=\"" + std::to_string(12 + id % 8) + "\" shadowText=\"1\" scaleText=\"0\"/>";
    s += "<icon location=\"" + std::to_string(id % 3) + "\"/><color>";
    for (const char* state : {"enabled", "disabled", "clicked", "pressed"})
        s += std::string("<") + state + ">" + colour("facePrimary", 1) + colour("faceSeconday", 2) +
             colour("border", 3) + "</" + state + ">";
    s += colour("background", 4);
    if (id % 4 == 2)
        s += "<brush id=\"2\" rotate=\"90\" position=\"0.00,0.50,1.00\" enabled=\"255 1 2 3,255 4 5 6,255 7 8 9\"/>";
    else
        s += "<brush id=\"" + std::to_string(id % 4) + "\" rotate=\"90\" focus=\"0.50\" scale=\"0.80\"/>";
    return s + "</color></style>\n";
}

// 8,000 full styles and 2,000 derived ones in chains of depth 1 to 5; derived elements are scattered through the
// file, often before the base they name.
inline const std::wstring& StyleFile() {
    static const std::wstring path = [] {
        std::vector<std::string> elements;
        const int bases = kStyles - kDerived;
        for (int i = 0; i < bases; ++i) elements.push_back(FullStyle(i, "base" + std::to_string(i)));
        for (int i = 0; i < kDerived; ++i) {
            const int depth = i % kMaxDepth + 1;
            const std::string base = depth == 1 ? "base" + std::to_string((i * 37) % bases) : "derived" + std::to_string(i - 1);
            const int id = bases + i;
            elements.push_back("<style id=\"" + std::to_string(id) + "\" name=\"derived" + std::to_string(i) +
                               "\" basename=\"" + base + "\"><font name=\"Verdana\" size=\"" + std::to_string(10 + depth) +
                               "\"/><color><pressed><border r=\"" + std::to_string(depth) + "\"/></pressed></color></style>\n");
        }
        std::mt19937 rng(12345);
        std::shuffle(elements.begin(), elements.end(), rng);
        const auto file = std::filesystem::temp_directory_path() / "uc_bench_ButtonStyles.xml";
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Styles>\n";
        for (const std::string& e : elements) out << e;
        out << "</Styles>\n";
        return uc::FromFsPath(file);
    }();
    return path;
}

// A file holding one chain of `depth` styles, each deriving from the one before (written once per depth).
inline std::wstring ChainFile(int depth) {
    const auto file = std::filesystem::temp_directory_path() / ("uc_bench_chain_" + std::to_string(depth) + ".xml");
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    out << "<Styles>\n<style id=\"0\" name=\"s0\"><shape shape=\"1\"/></style>\n";
    for (int i = 1; i < depth; ++i)
        out << "<style id=\"" << i << "\" name=\"s" << i << "\" basename=\"s" << (i - 1) << "\"><icon location=\""
            << i % 3 << "\"/></style>\n";
    out << "</Styles>\n";
    return uc::FromFsPath(file);
}

}  // namespace uc::bench
