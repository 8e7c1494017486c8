#include "gentl/NodeMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <type_traits>
#include <utility>

#include "gentl/Answer.h"
#include "gentl/XmlText.h"

namespace marovine::gentl {

namespace {

/// Texts of features are cut to this many bytes, with their end.
constexpr std::size_t kTextBytes = 1024;
constexpr std::string_view kSeparator = " > ";
constexpr std::array kVisibilities{"Beginner", "Expert", "Guru", "Invisible"};

/// The node's name of a category: its path without what names may not hold.
std::string categoryName(std::string_view path) {
    std::string name;
    for (const char c : path) {
        const bool letter = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (letter)
            name += c;
        else if (c == '>')
            name += '_';
    }
    return name;
}

template <class T>
void store(T value, Bytes out) {
    std::memcpy(out.data(), &value, out.size());  // little endian, like the machine
}

/// A number from a register's bytes.
template <class T>
T load(ConstBytes data, Width width) {
    if constexpr (std::is_floating_point_v<T>) {
        T value{};
        std::memcpy(&value, data.data(), sizeof value);
        return value;
    } else {
        std::uint64_t value = 0;
        std::memcpy(&value, data.data(), data.size());
        const bool negative = width.isSigned && data.size() == 4 && (value >> 31) != 0;
        return static_cast<T>(negative ? value | ~std::uint64_t{0xFFFFFFFF} : value);
    }
}

/// Refuses to write what is locked or not available.
void mustBeWritable(const Feature& feature) {
    if (feature.available && !feature.available())
        throw Error(GC_ERR_ACCESS_DENIED, feature.name + " is not available in the present mode");
    if (feature.locked && feature.locked())
        throw Error(GC_ERR_ACCESS_DENIED,
                    feature.whyLocked ? feature.whyLocked() : feature.name + " cannot be set now");
}

/// A write that asks first whether it may.
template <class... Arguments>
std::function<void(Arguments...)> guarded(const Feature& feature, std::function<void(Arguments...)> write) {
    if (!write || (!feature.locked && !feature.available)) return write;
    return [feature, write = std::move(write)](Arguments... arguments) {
        mustBeWritable(feature);
        write(arguments...);
    };
}
template <class T>
Access<T> guarded(const Feature& feature, Access<T> access) {
    access.write = guarded(feature, std::move(access.write));
    return access;
}

}  // namespace

NodeMap::NodeMap(std::string port, std::string_view model, std::string_view toolTip)
    : port_(std::move(port)) {
    head_ =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<RegisterDescription ModelName=\"" +
        escaped(model) + "\" VendorName=\"Marovine\" ToolTip=\"" + escaped(toolTip) +
        "\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
        "SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
        "MinorVersion=\"0\" SubMinorVersion=\"0\" ProductGuid=\"b41e9d07-2c6a-0f13-8e5d-a9c3f2e71d60\" "
        "VersionGuid=\"3f7a2c10-58e4-4b9d-9c21-7d0e5a6b1c42\" "
        "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\" "
        "xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xsi:schemaLocation=\"http://www.genicam.org/GenApi/Version_1_1 "
        "http://www.genicam.org/GenApi/GenApiSchema_Version_1_1.xsd\">\n";
    nodes_ = "  <Port Name=\"" + port_ + "\" NameSpace=\"Standard\">\n" +
             xmlElement("Visibility", "Invisible") + "  </Port>\n";
}

// ---- the parts of a node ----

void NodeMap::element(std::string_view name, std::string_view value) {
    if (!value.empty()) nodes_ += xmlElement(name, value);
}

void NodeMap::list(std::string_view name, const std::vector<std::string>& values) {
    for (const auto& value : values) element(name, value);
}

void NodeMap::begin(std::string_view node, const Feature& feature, std::string_view access) {
    nodes_ += "  <" + std::string(node) + " Name=\"" + feature.name + "\" NameSpace=\"" +
              (feature.custom ? "Custom" : "Standard") + "\">\n";
    element("ToolTip", feature.toolTip);
    element("DisplayName", feature.displayName);
    element("Visibility", kVisibilities[static_cast<std::size_t>(feature.visibility)]);
    nodes_ += access;
    list("pInvalidator", feature.movedBy);
    if (feature.streamable) element("Streamable", "Yes");
}

void NodeMap::end(std::string_view node) {
    nodes_ += "  </" + std::string(node) + ">\n";
}

void NodeMap::end(std::string_view node, const Feature& feature, Parts parts) {
    end(node);
    parts_[feature.name] = std::move(parts);
    if (feature.category.empty()) return;
    if (!categories_.contains(feature.category)) categoryOrder_.push_back(feature.category);
    categories_[feature.category].push_back(feature.name);
}

void NodeMap::registerNode(std::string_view node, const std::string& name, Register content, bool readOut,
                           std::string_view more) {
    content.name = name;
    const bool writable = content.write != nullptr;
    const std::string length = std::to_string(content.length);
    const std::uint64_t address = registers_.add(std::move(content));
    nodes_ += "  <" + std::string(node) + " Name=\"" + name + "\">\n";
    element("Visibility", "Invisible");
    element("Address", "0x" + hexadecimal(address));
    element("Length", length);
    element("AccessMode", writable ? "RW" : "RO");
    element("pPort", port_);
    element("Cachable", "NoCache");
    if (readOut) element("PollingTime", "1000");
    nodes_ += more;
    end(node);
}

/// The register of a number's value; returns its name.
template <class T>
std::string NodeMap::number(const std::string& name, const Access<T>& access, Width width, bool readOut) {
    Register content{.name = name, .length = width.bytes};
    if (access.read) content.read = [read = access.read](std::size_t, Bytes out) { store(read(), out); };
    if (access.write)
        content.write = [write = access.write, width](std::size_t, ConstBytes data) {
            write(load<T>(data, width));
        };
    if constexpr (std::is_floating_point_v<T>) {
        registerNode("FloatReg", name, std::move(content), readOut, xmlElement("Endianess", "LittleEndian"));
    } else {
        registerNode("IntReg", name, std::move(content), readOut,
                     xmlElement("Sign", width.isSigned ? "Signed" : "Unsigned") +
                         xmlElement("Endianess", "LittleEndian"));
    }
    return name;
}

template <class T>
std::string NodeMap::rangeOf(const std::string& name, const Access<T>& access, Width width) {
    std::string range;
    const auto add = [&](const char* what, const std::function<T()>& read) {
        if (read)
            range += xmlElement(std::string("p") + what,
                                number(name + what, Access<T>{.read = read}, width, false));
    };
    add("Min", access.minimum);
    add("Max", access.maximum);
    add("Inc", access.increment);
    return range;
}

/// The register of a yes or no; returns its name.
std::string NodeMap::flag(const std::string& name, const std::function<bool()>& ask) {
    return number(name, Access<std::int64_t>{.read = [ask] { return ask() ? 1 : 0; }}, {.bytes = 4}, false);
}

std::string NodeMap::guards(const Feature& feature) {
    std::string access;
    const auto add = [&](const char* what, const std::function<bool()>& ask) {
        if (ask) access += xmlElement(std::string("pIs") + what, flag(feature.name + what, ask));
    };
    add("Available", feature.available);
    add("Locked", feature.locked);
    return access;
}

// ---- features with registers ----

void NodeMap::integer(const Feature& feature, const Access<std::int64_t>& access, Width width) {
    Parts parts{.kind = Kind::Integer, .access = guards(feature), .unit = feature.unit};
    parts.range = rangeOf(feature.name, access, width);
    const std::string value =
        number(feature.name + "Value", guarded(feature, access), width, feature.readOut);
    begin("Integer", feature, parts.access);
    element("pValue", value);
    nodes_ += parts.range;
    element("Unit", feature.unit);
    list("pSelected", feature.selects);
    end("Integer", feature, std::move(parts));
}

void NodeMap::real(const Feature& feature, const Access<double>& access) {
    Parts parts{.kind = Kind::Real, .access = guards(feature), .unit = feature.unit};
    parts.range = rangeOf(feature.name, access, {});
    auto checked = guarded(feature, access);
    if (checked.write)
        checked.write = [name = feature.name, write = std::move(checked.write)](double value) {
            if (std::isnan(value)) throw Error(GC_ERR_INVALID_VALUE, name + " = NaN: that is no number");
            write(value);
        };
    const std::string value = number(feature.name + "Value", checked, {}, feature.readOut);
    begin("Float", feature, parts.access);
    element("pValue", value);
    nodes_ += parts.range;
    element("Unit", feature.unit);
    end("Float", feature, std::move(parts));
}

void NodeMap::boolean(const Feature& feature, const Access<std::int64_t>& access) {
    Parts parts{.access = guards(feature)};
    const std::string value =
        number(feature.name + "Value", guarded(feature, access), {.bytes = 4}, feature.readOut);
    begin("Boolean", feature, parts.access);
    element("pValue", value);
    element("OnValue", "1");
    element("OffValue", "0");
    end("Boolean", feature, std::move(parts));
}

void NodeMap::text(const Feature& feature, const TextAccess& access) {
    Register content{.name = feature.name, .length = kTextBytes, .inParts = true};
    content.read = [read = access.read](std::size_t offset, Bytes out) {
        const std::string text = read();
        const std::size_t length = std::min(text.size(), kTextBytes - 1);
        std::ranges::fill(out, std::uint8_t{0});
        if (offset < length)
            std::memcpy(out.data(), text.data() + offset, std::min(out.size(), length - offset));
    };
    if (access.write)
        content.write = [write = guarded(feature, access.write)](std::size_t offset, ConstBytes data) {
            if (offset != 0) throw Error(GC_ERR_INVALID_PARAMETER, "a text is written from its beginning");
            const auto* text = reinterpret_cast<const char*>(data.data());
            write(std::string(text, std::find(text, text + data.size(), '\0')));
        };
    Parts parts{.access = guards(feature)};
    const std::string value = feature.name + "Value";
    registerNode("StringReg", value, std::move(content), feature.readOut);
    begin("String", feature, parts.access);
    element("pValue", value);
    end("String", feature, std::move(parts));
}

void NodeMap::enumeration(const Feature& feature, const std::vector<EntryNode>& entries,
                          const Access<std::int64_t>& access) {
    Parts parts{.kind = Kind::Enumeration, .access = guards(feature)};
    for (const auto& entry : entries) {
        parts.entries += "    <EnumEntry Name=\"" + entry.name + "\">\n";
        if (!entry.displayName.empty()) parts.entries += "  " + xmlElement("DisplayName", entry.displayName);
        if (entry.available)
            parts.entries += "  " + xmlElement("pIsAvailable", flag(feature.name + entry.name + "Available",
                                                                    entry.available));
        parts.entries += "  " + xmlElement("Value", std::to_string(entry.value)) + "    </EnumEntry>\n";
    }
    const std::string value =
        number(feature.name + "Value", guarded(feature, access), {.bytes = 4}, feature.readOut);
    begin("Enumeration", feature, parts.access);
    nodes_ += parts.entries;
    element("pValue", value);
    list("pSelected", feature.selects);
    end("Enumeration", feature, std::move(parts));
}

void NodeMap::onlyChoice(const Feature& feature, const EntryNode& entry) {
    enumeration(feature, {entry}, {.read = [value = entry.value] { return value; }});
}

void NodeMap::onlyIndex(const Feature& feature, const std::string& refusal) {
    const auto zero = [] { return 0; };
    integer(feature, {.read = zero,
                      .write =
                          [refusal](std::int64_t index) {
                              if (index != 0) throw Error(GC_ERR_INVALID_VALUE, refusal);
                          },
                      .minimum = zero,
                      .maximum = zero,
                      .increment = [] { return 1; }});
}

void NodeMap::command(const Feature& feature, const std::function<void()>& run,
                      const std::function<bool()>& isDone) {
    Access<std::int64_t> access{.read = [isDone] { return isDone && !isDone() ? 1 : 0; },
                                .write =
                                    [name = feature.name, run](std::int64_t value) {
                                        if (value != 1)
                                            throw Error(GC_ERR_INVALID_VALUE,
                                                        name + " is a command: write 1");
                                        run();
                                    }};
    Parts parts{.access = guards(feature)};
    const std::string value = number(feature.name + "Value", guarded(feature, access), {.bytes = 4}, false);
    begin("Command", feature, parts.access);
    element("pValue", value);
    element("CommandValue", "1");
    end("Command", feature, std::move(parts));
}

void NodeMap::table(const Feature& feature, const TableAccess& access) {
    constexpr std::size_t width = sizeof(std::uint32_t);
    const auto inElements = [name = feature.name](std::size_t offset, std::size_t size) {
        if (offset % width != 0 || size % width != 0)
            throw Error(GC_ERR_INVALID_PARAMETER, name + " is read and written in whole elements of 4 bytes");
        return std::pair(static_cast<std::uint32_t>(offset / width),
                         static_cast<std::uint32_t>(size / width));
    };
    Register content{.name = feature.name, .length = access.elements * width, .inParts = true};
    content.read = [=, read = access.read](std::size_t offset, Bytes out) {
        const auto [first, count] = inElements(offset, out.size());
        const auto elements = read(first, count);
        std::memcpy(out.data(), elements.data(), out.size());
    };
    if (access.write)
        content.write = [=, write = guarded(feature, access.write)](std::size_t offset, ConstBytes data) {
            const auto [first, count] = inElements(offset, data.size());
            std::vector<std::uint32_t> elements(count);
            std::memcpy(elements.data(), data.data(), data.size());
            write(first, elements);
        };
    content.name = feature.name;
    const bool writable = content.write != nullptr;
    const std::string length = std::to_string(content.length);
    Parts parts{.access = guards(feature)};
    const std::uint64_t address = registers_.add(std::move(content));
    Feature shown = feature;
    shown.movedBy.clear();  // a register names them behind its port
    shown.streamable = false;
    begin("Register", shown, parts.access);
    element("Address", "0x" + hexadecimal(address));
    element("Length", length);
    element("AccessMode", writable ? "RW" : "RO");
    element("pPort", port_);
    element("Cachable", "NoCache");
    list("pInvalidator", feature.movedBy);
    end("Register", feature, std::move(parts));
}

// ---- features made of others ----

void NodeMap::alias(const Feature& feature, const std::string& target) {
    const Parts& parts = parts_.at(target);
    const char* node = parts.kind == Kind::Integer ? "Integer"
                       : parts.kind == Kind::Real  ? "Float"
                                                   : "Enumeration";
    begin(node, feature, parts.access);
    nodes_ += parts.entries;
    element("pValue", parts.kind == Kind::Enumeration ? target + "Value" : target);
    nodes_ += parts.range;
    element("Unit", parts.unit);
    end(node, feature, Parts(parts));
}

void NodeMap::converted(const Feature& feature, const std::string& target, std::string_view to,
                        std::string_view from) {
    const Parts& parts = parts_.at(target);
    begin("Converter", feature, parts.access);
    element("FormulaTo", to);
    element("FormulaFrom", from);
    element("pValue", target);
    element("Unit", feature.unit);
    element("Slope", "Automatic");
    end("Converter", feature, {});
}

void NodeMap::computed(const Feature& feature, const std::vector<std::string>& from,
                       std::string_view formula) {
    begin("IntSwissKnife", feature, {});
    for (const auto& name : from)
        nodes_.append("    <pVariable Name=\"")
            .append(name)
            .append("\">")
            .append(name)
            .append("</pVariable>\n");
    element("Formula", formula);
    element("Unit", feature.unit);
    end("IntSwissKnife", feature, {});
}

void NodeMap::eventData(const Feature& feature, std::uint64_t event, std::size_t offset) {
    const std::string number = hexadecimal(event);
    const std::string port = "Event" + number + "Port";
    if (eventPorts_.insert(event).second)
        nodes_ += "  <Port Name=\"" + port + "\">\n" + xmlElement("Visibility", "Invisible") +
                  xmlElement("EventID", number) + "  </Port>\n";
    nodes_ += "  <IntReg Name=\"" + feature.name + "Value\">\n";
    element("Visibility", "Invisible");
    element("Address", std::to_string(offset));
    element("Length", "8");
    element("AccessMode", "RO");
    element("pPort", port);
    element("Sign", "Signed");
    element("Endianess", "LittleEndian");
    end("IntReg");
    begin("Integer", feature, {});
    element("pValue", feature.name + "Value");
    element("Unit", feature.unit);
    end("Integer", feature, {});
}

// ---- the document ----

std::string NodeMap::document() const {
    // The groups of a path stand below each other, whether they hold features of their own or not.
    std::map<std::string, std::vector<std::string>> below;
    std::vector<std::string> order{""};
    for (const auto& path : categoryOrder_) {
        for (std::size_t end = path.find(kSeparator);; end = path.find(kSeparator, end + 1)) {
            const std::string part = path.substr(0, end);
            const std::size_t last = part.rfind(kSeparator);
            if (std::ranges::find(order, part) == order.end()) {
                order.push_back(part);
                below[last == part.npos ? "" : part.substr(0, last)].push_back(part);
            }
            if (end == path.npos) break;
        }
    }
    std::string text = head_;
    for (const auto& path : order) {
        const std::size_t last = path.rfind(kSeparator);
        const std::string shown = last == path.npos ? path : path.substr(last + kSeparator.size());
        text += "  <Category Name=\"" + (path.empty() ? "Root" : categoryName(path)) +
                "\" NameSpace=\"Standard\">\n";
        if (!path.empty()) text += xmlElement("DisplayName", shown);
        for (const auto& child : below[path]) text += xmlElement("pFeature", categoryName(child));
        if (const auto own = categories_.find(path); own != categories_.end())
            for (const auto& name : own->second) text += xmlElement("pFeature", name);
        text += "  </Category>\n";
    }
    return text + nodes_ + "</RegisterDescription>\n";
}

}  // namespace marovine::gentl
