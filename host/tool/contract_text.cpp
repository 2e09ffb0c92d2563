#include "tool/contract.h"

#include <fmt/format.h>

#include <optional>

namespace tool {
namespace {

// Writes entries as text, or as Markdown: headings, items below them, and what goes over the wire as code.
class Writer {
public:
    explicit Writer(bool markdown) : markdown_(markdown) {}

    void write(const Json& entry) {
        const std::string kind = entry["entry"];
        if (kind == "module")
            write_module(entry);
        else if (kind == "table" || kind == "scalars")
            write_group(entry);
        else if (kind == "request")
            write_request(entry);
        else if (kind == "object")
            write_object(entry);
        else if (kind == "example")
            write_example(entry);
        else
            write_write(entry);
    }
    std::string text() && { return std::move(text_); }

private:
    static std::string plain(const Json& json) { return json.is_string() ? json.get<std::string>() : json.dump(); }

    void heading(int level, const std::string& text) {
        if (markdown_)
            text_ += fmt::format("{}{} {}\n\n", text_.empty() ? "" : "\n",
                                 std::string(static_cast<std::size_t>(level), '#'), text);
        else
            text_ += fmt::format("{}{:{}}{}\n", level == 2 && !text_.empty() ? "\n" : "", "", 2 * (level - 2), text);
    }
    void item(int level, const std::string& text) {
        text_ += markdown_ ? fmt::format("{:{}}- {}\n", "", level == 0 ? 0 : 2 * (level - 1), text)
                           : fmt::format("{:{}}{}\n", "", 4 + 2 * level, text);
    }
    std::string code(const Json& text) const {
        return markdown_ ? fmt::format("`{}`", plain(text)) : in_quotes(plain(text));
    }
    template <class Items, class Format>
    static std::string joined(const Items& items, const Format& format, const char* between = ", ") {
        std::string text;
        for (const Json& item : items) text += (text.empty() ? "" : between) + format(item);
        return text;
    }

    void write_module(const Json& entry) {
        heading(2, fmt::format("{} {} ({}{})", plain(entry["name"]), plain(entry["oid"]),
                               entry.contains("published") ? plain(entry["published"]) + ", " : "",
                               counted(entry["objects"].get<std::size_t>(), "object")));
    }

    void write_group(const Json& entry) {
        std::string text = plain(entry["name"]);
        text += entry.contains("oid") ? ' ' + plain(entry["oid"]) : ", scalars";
        if (entry["answers"] == false) text += ", never answers";
        heading(3, text);
        if (!entry.contains("key")) return;
        const Json& key = entry["key"];
        const bool is_record = key.contains("record");
        const auto field = [](const Json& each) {
            const std::string what = plain(each["is"]);
            const std::string family = each.contains("family") ? plain(each["family"]) + ' ' : "";
            const std::string part = each.contains("part") ? " of part " + plain(each["part"]) : "";
            return fmt::format("{}{}{} at {} ({})", family, what, part, plain(each["offset"]), plain(each["octets"]));
        };
        item(0, fmt::format("{} of {}: {}", is_record ? "record in place of the key," : "key",
                            counted(key["octets"].get<std::size_t>(), "octet"),
                            joined(is_record ? key["record"] : key["fields"], field)));
    }

    void write_request(const Json& entry) {
        const bool first = entry["for"] == "first row";
        std::string text = entry.contains("row") ? "row " + entry["row"].dump() : plain(entry["for"]);
        for (const char* const context : {"vrf", "context"})
            if (entry.contains(context)) text += fmt::format(", {} {}", context, plain(entry[context]));
        text += fmt::format(": {}, {} {}", code(entry["command"]),
                            entry["columns"].dump().find_first_of(",-") != std::string::npos ? "magics" : "magic",
                            plain(entry["columns"]));
        if (!first && entry["exact"].size() == 1) text += entry["exact"][0] == 1 ? ", GET alone" : ", GETNEXT alone";
        text += fmt::format(", class {}, result of {}", plain(entry["class"]),
                            counted(entry["size"].get<std::size_t>(), "octet"));
        if (entry.contains("index_count")) text += ", index count " + plain(entry["index_count"]);
        if (entry.contains("key")) text += ", key " + code(entry["key"]);
        item(0, text);
    }

    void write_object(const Json& entry) {
        row_.reset();
        heading(4, fmt::format("{} {}", plain(entry["name"]), plain(entry["oid"])));
        std::string text =
            fmt::format("{}, {}, magic {}, ", plain(entry["type"]), plain(entry["access"]), plain(entry["magic"]));
        const std::string answers = entry["answers"];
        text += answers == "backend" ? "asks the backend"
                : answers == "library"
                    ? "asks no backend: the library answers, with a constant or the kernel's statistics"
                    : "never answers";
        item(1, text);
        if (!entry.contains("takes")) return;
        const Json& takes = entry["takes"];
        if (takes.is_string()) return item(1, "takes nothing by itself");
        text = "takes " + joined(takes["types"], plain, " or ");
        if (takes.contains("sizes")) text += " of " + joined(takes["sizes"], plain) + " octets";
        item(1, text);
    }

    static std::string values(const Json& entry) {
        const Json& values = entry["values"];
        if (values.is_object()) {
            const std::string octets = values["octets"];
            const auto size = values["size"].get<std::size_t>();
            const std::size_t at = values.value("at", std::size_t{0});
            const bool whole = at + (octets.size() + 1) / 3 == size;
            return fmt::format("octets {}{}{} ({})", octets, whole ? "" : " and zeros",
                               at != 0 ? fmt::format(" at {}", at) : "", size);
        }
        if (values == "any text") return values;
        return values.is_string() && values.get<std::string>().find("..") == std::string::npos
                   ? in_quotes(values.get<std::string>())
                   : plain(values);
    }

    void write_write(const Json& entry) {
        const std::string what = entry.value("what", "value");
        std::string text;
        if (what == "value")
            text = values(entry);
        else if (what == "refused line")
            text = fmt::format("line {} is refused", plain(entry["line"]));
        else if (what == "type")
            text = "type " + joined(entry["types"], plain, ", ");
        else if (what == "length")
            text = "length " + plain(entry["sizes"]);
        else
            text = what;
        const Json row = entry.value("row", Json());
        if (!row_) row_ = row;
        if (row != *row_) text += " in row " + row.dump();
        for (const char* const context : {"vrf", "context"})
            if (entry.contains(context)) text += fmt::format(", {} {}", context, plain(entry[context]));
        if (entry.contains("row exists")) text += ", a row that is not there";
        if (entry.contains("error"))
            text += fmt::format(": {} in {}", plain(entry["error"]), plain(entry["phase"]));
        else if (entry.value("sends", Json::array()).empty())
            text += ": sends nothing";
        else
            text += ':';
        item(1, text);
        write_traffic(entry);
    }

    void write_traffic(const Json& entry) {
        for (const Json& ask : entry.value("asks", Json::array()))
            item(2, fmt::format("asks {} magic {} as {}{}", code(ask["command"]), plain(ask["magic"]),
                                plain(ask["request"]), ask.contains("answer") ? " -> " + plain(ask["answer"]) : ""));
        for (const Json& line : entry.value("sends", Json::array()))
            item(2, fmt::format("mode {} {} from {}{}", plain(line["mode"]), code(line["line"]), plain(line["caller"]),
                                line.contains("phase") ? " in " + plain(line["phase"]) : ""));
    }

    void write_example(const Json& entry) {
        heading(4, "Example: " + plain(entry["name"]));
        item(1, fmt::format("{}: {}", code(entry["request"]), plain(entry["error"])));
        write_traffic(entry);
    }

    bool markdown_;
    std::optional<Json> row_;  // that an object is tried in first
    std::string text_;
};

}  // namespace

std::string contract_text(const std::vector<Json>& entries, ListForm form) {
    if (form != ListForm::json) {
        Writer writer(form == ListForm::markdown);
        for (const Json& entry : entries) writer.write(entry);
        return std::move(writer).text();
    }
    std::string text;
    for (const Json& entry : entries) text += json_line(entry) + '\n';
    return text;
}

}  // namespace tool
