#include "Metrics/ExpositionText.hpp"

#include <utf8proc.h>

#include <algorithm>
#include <cstdio>
#include <set>

namespace tarnwick::ExpositionText {

namespace {

bool isUTF8(std::string_view text)
{
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto left = static_cast<utf8proc_ssize_t>(text.size());
    while (left > 0) {
        utf8proc_int32_t codepoint = 0;
        utf8proc_ssize_t length = utf8proc_iterate(bytes, left, &codepoint);
        if (length <= 0)
            return false;
        bytes += length;
        left -= length;
    }
    return true;
}

// A control character other than the line feed, which the format escapes itself: written
// raw, it would act on a terminal that shows the metrics.
bool isControl(unsigned char byte)
{
    return (byte < 0x20 && byte != '\n') || byte == 0x7F;
}

bool hasControl(std::string_view text)
{
    return std::ranges::any_of(text, [](char c) { return isControl(static_cast<unsigned char>(c)); });
}

// Invalid bytes and control characters as "\xHH" and backslashes doubled; other characters
// as they are.
std::string withBytesWritten(std::string_view text)
{
    std::string result;
    const auto* bytes = reinterpret_cast<const utf8proc_uint8_t*>(text.data());
    auto left = static_cast<utf8proc_ssize_t>(text.size());
    while (left > 0) {
        utf8proc_int32_t codepoint = 0;
        utf8proc_ssize_t length = utf8proc_iterate(bytes, left, &codepoint);
        if (length <= 0 || isControl(*bytes)) {
            char escaped[5];
            std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned>(*bytes));
            result += escaped;
            length = 1;
        } else if (*bytes == '\\') {
            result += "\\\\";
        } else {
            result.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
        }
        bytes += length;
        left -= length;
    }
    return result;
}

// The format's escapes: in HELP text backslash and line feed, in label values also the quote.
std::string escaped(std::string_view text, bool quote)
{
    std::string result;
    result.reserve(text.size());
    for (char c : text) {
        if (c == '\\')
            result += "\\\\";
        else if (c == '\n')
            result += "\\n";
        else if (c == '"' && quote)
            result += "\\\"";
        else
            result += c;
    }
    return result;
}

std::string labelsText(const MetricFamily::Sample& sample)
{
    if (sample.labels.empty())
        return {};
    std::string text = "{";
    for (const auto& [name, value] : sample.labels) {
        if (text.size() > 1)
            text += ',';
        text += name + "=\"" + escaped(labelValue(value), true) + "\"";
    }
    return text + "}";
}

std::string_view typeName(MetricFamily::Type type)
{
    switch (type) {
    case MetricFamily::Type::gauge:
        break;
    }
    return "gauge";
}

}

std::string labelValue(std::string_view text)
{
    if (isUTF8(text) && text.find('\\') == std::string_view::npos && !hasControl(text))
        return std::string(text);
    return withBytesWritten(text);
}

std::string render(std::span<const MetricFamily> families)
{
    std::string text;
    for (const MetricFamily& family : families) {
        text += "# HELP " + family.name + " " + escaped(family.help, false) + "\n";
        text += "# TYPE " + family.name + " " + std::string(typeName(family.type)) + "\n";
        std::set<std::string> written;
        for (const MetricFamily::Sample& sample : family.samples) {
            std::string labels = labelsText(sample);
            if (!written.insert(labels).second)
                continue;
            text += family.name + labels + " " + std::to_string(sample.value) + "\n";
        }
    }
    return text;
}

}
