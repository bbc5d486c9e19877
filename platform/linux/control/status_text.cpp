#include "control/status_text.h"

#include <cstdio>
#include <string_view>

#include "log/log_line.h"

namespace platform {

namespace {

template <typename... Functions> struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <typename... Functions> Overloaded(Functions...) -> Overloaded<Functions...>;

std::string number(double value)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.6g", value);
    // The decimal sign is the locale's; JSON knows one only.
    for (char &c : text) {
        if (c == ',')
            c = '.';
    }
    return text;
}

std::string json_string(std::string_view text)
{
    std::string json = "\"";
    for (size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (const size_t length = printable_length(text, at); length != 0) {
            if (byte == '"' || byte == '\\')
                json += '\\';
            json += text.substr(at, length);
            at += length;
            continue;
        }
        char escape[8];
        std::snprintf(escape, sizeof escape, byte < 0x80 ? "\\u%04x" : "\\udc%02x",
                      static_cast<unsigned>(byte));
        json += escape;
        ++at;
    }
    return json + "\"";
}

std::string json_value(const StatusValue &value);

template <typename List, typename Writer>
std::string joined(const List &list, const char *separator, Writer write)
{
    std::string text;
    for (const auto &item : list) {
        if (!text.empty())
            text += separator;
        text += write(item);
    }
    return text;
}

std::string json_object(const std::vector<StatusNode> &nodes)
{
    return "{" +
           joined(nodes, ", ",
                  [](const StatusNode &node) {
                      return json_string(node.name) + ": " + json_value(node.value);
                  }) +
           "}";
}

std::string json_value(const StatusValue &value)
{
    return std::visit(Overloaded{
                          [](std::monostate) { return std::string("null"); },
                          [](bool truth) { return std::string(truth ? "true" : "false"); },
                          [](int64_t whole) { return std::to_string(whole); },
                          [](double real) { return number(real); },
                          [](const std::string &text) { return json_string(text); },
                          [](const std::vector<std::string> &texts) {
                              return "[" + joined(texts, ", ", json_string) + "]";
                          },
                          [](const std::vector<StatusNode> &nodes) { return json_object(nodes); },
                      },
                      value);
}

} // namespace

std::string status_as_json(const std::vector<StatusNode> &status)
{
    return json_object(status) + "\n";
}

} // namespace platform
