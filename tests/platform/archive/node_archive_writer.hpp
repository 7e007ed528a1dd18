#pragma once

// Writes node archives in the container format for tests: one element a line, CR LF line ends,
// as the library's resources are written.

#include <string>
#include <utility>
#include <vector>

namespace qafui_testing::archive {

inline std::string Pair(const std::string& key, const std::string& value) {
    return "<prop.pair>\r\n<key>" + key + "</key>\r\n" + value + "</prop.pair>\r\n";
}
inline std::string List(const std::string& pairs) {
    return "<prop.list>\r\n" + pairs + "</prop.list>\r\n";
}
inline std::string Int(long long v, bool isUnsigned = false) {
    return std::string("<int type='") + (isUnsigned ? "unsigned" : "signed") + "' size='32'>" +
           std::to_string(v) + "</int>\r\n";
}
inline std::string Float(const std::string& text) {
    return "<float>" + text + "</float>\r\n";
}
inline std::string Double(const std::string& text) {
    return "<double>" + text + "</double>\r\n";
}
inline std::string Str(const std::string& text) {
    return "<string>" + text + "</string>\r\n";
}
inline std::string UStr(const std::string& text) {
    return "<ustring>" + text + "</ustring>\r\n";
}
inline std::string Bool(bool b) {
    return b ? "<true/>\r\n" : "<false/>\r\n";
}
inline std::string Rect(float left, float top, float width, float height) {
    auto f = [](float v) {
        return Float(std::to_string(v));
    };
    return List(Pair(".aptype", Int(1)) + Pair("height", f(height)) + Pair("left", f(left)) +
                Pair("top", f(top)) + Pair("width", f(width)));
}
inline std::string Enum(int selected) {
    return List(Pair(".aptype", Int(2)) + Pair("selected", Int(selected)));
}
inline std::string UStrArray(const std::vector<std::string>& items) {
    std::string text = "<array>\r\n<array.type>\r\n<ustring/>\r\n</array.type>\r\n";
    for (const std::string& item : items)
        text += UStr(item);
    return text + "</array>\r\n";
}
inline std::string Indexed(const std::string& prefix, const std::vector<std::string>& members) {
    std::string pairs = Pair("count", Int((long long)members.size(), true));
    for (std::size_t i = 0; i < members.size(); ++i)
        pairs += Pair(prefix + std::to_string(i), members[i]);
    return List(pairs);
}
/// A section: its name and then the class's own pairs.
inline std::string Section(const std::string& name, const std::string& pairs = {}) {
    return List(Pair("sectionName", UStr(name)) + pairs);
}
inline std::string NodeSection(const std::string& id, float l, float t, float w, float h,
                               const std::string& more = {}) {
    return Section("qorui::ui::UI_Node",
                   Pair("bounds", Rect(l, t, w, h)) + Pair("id", Str(id)) + more);
}
inline std::string SubViewSection(const std::vector<std::string>& children = {}) {
    return Section("qorui::ui::UI_SubView",
                   Pair("AutoLayout", Bool(false)) + Pair("children", Indexed("child-", children)));
}
inline std::string Node(const std::string& adapter, const std::vector<std::string>& sections) {
    return List(Pair("adapter", UStr(adapter)) + Pair("sections", Indexed("section-", sections)));
}
inline std::string Document(const std::string& root) {
    return "<?xml version='1.0'?>\r\n<prop.map version='4'>\r\n" +
           List(Pair("UINodeArchive", Int(1, true)) + Pair("root", root)) + "</prop.map>\r\n";
}

} // namespace qafui_testing::archive
