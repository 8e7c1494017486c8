/// The calls on an applet that answer with a report, as dicts and tuples: marovine/_reports.py gives them
/// their shape.

#include <nanobind/stl/filesystem.h>

#include <filesystem>
#include <optional>
#include <utility>

#include "client/About.h"
#include "client/ConfigCheck.h"
#include "client/ConfigDiff.h"
#include "client/Explain.h"
#include "client/Failure.h"
#include "client/SkippedValues.h"
#include "client/Snapshot.h"
#include "python/native/Applet.h"

namespace marovine::python {

namespace fs = std::filesystem;
using host::Value;

namespace {

nb::object orNone(const ParameterType& type, const host::Applet& applet, const std::optional<Value>& value) {
    return value ? toPython(type, applet, *value) : nb::none();
}

// ---- one parameter ----

nb::dict describe(const AppletObject& object, const std::string& name) {
    const auto used = object.use();
    const auto& type = object.named(name);
    const auto parameter = used->parameter(type.name);
    nb::dict result;
    result["name"] = parameter.name;
    result["id"] = parameter.id;
    result["group"] = parameter.group;
    result["title"] = parameter.displayName;
    result["unit"] = parameter.unit;
    result["readable"] = parameter.readable;
    result["writable"] = parameter.writable;
    result["read_out"] = host::isReadOut(parameter.name);
    result["accepted"] = parameter.rangeText();
    result["elements"] = parameter.elements;
    result["file_pattern"] = parameter.filePattern;
    result["minimum"] = parameter.range ? toPython(parameter.range->minimum) : nb::none();
    result["maximum"] = parameter.range ? toPython(parameter.range->maximum) : nb::none();
    result["step"] = parameter.hasStep() ? toPython(parameter.range->increment) : nb::none();
    nb::list entries;
    for (const auto& entry : parameter.entries) entries.append(toPython(type, *used, Value(entry.value)));
    result["entries"] = entries;
    result["kind"] = parameter.kind == FG_KIND_ENUMERATION    ? "enumeration"
                     : parameter.kind == FG_KIND_TEXT         ? "text"
                     : parameter.kind == FG_KIND_DOUBLE       ? "real"
                     : parameter.kind == FG_KIND_UINT32_FIELD ? "table"
                                                              : "integer";
    return result;
}

std::string description(const AppletObject& object, const std::string& name) {
    const auto used = object.use();
    const auto& type = object.named(name);
    return unlocked([&] { return used->description(type.name); });
}

/// What narrows the range of a parameter now, or makes it read-only, a sentence each.
std::vector<std::string> limits(const AppletObject& object, const std::string& name) {
    const auto used = object.useRemembered();
    const auto& type = object.named(name);
    return unlocked([&] {
        std::vector<std::string> result;
        for (const auto& narrowing : host::narrowings(*used, type.name))
            result.push_back(std::string(narrowing.upper ? "not above " : "not below ") + narrowing.limit +
                             ", because " + host::causesText(narrowing.causes));
        const auto causes = host::causesOfReadOnly(*used, type.name);
        if (!causes.empty()) result.push_back("read-only now, because " + host::causesText(causes));
        return result;
    });
}

std::vector<std::string> drives(const AppletObject& object, const std::string& name) {
    const auto used = object.useRemembered();
    const auto& type = object.named(name);
    return unlocked([&] { return host::drivenDesignParameters(*used, type.name); });
}

std::vector<std::string> displayOrder(const AppletObject& object) {
    const auto used = object.use();
    std::vector<std::string> result;
    for (const auto& parameter : used->tree()) result.push_back(parameter.name);
    return result;
}

// ---- several settings at once ----

struct Setting {
    const ParameterType* type;
    Value value;
    std::optional<Value> before{}, after{};
};

std::optional<Value> readOrNothing(host::Applet& applet, const std::string& name) {
    try {
        return applet.get(name);
    } catch (const host::Refused&) {
        return std::nullopt;
    }
}

/// What a run of settings did.
struct Outcome {
    std::vector<host::Change> moved;
    Writes writes;
    std::size_t done = 0;
    int code = 0;  ///< of the refusal that ended it
};

/// Takes every write of a board in while it lives.
class Listening {
 public:
    Listening(WriteListeners& listeners, Writes& writes) : listeners_(listeners), writes_(writes) {
        listeners_.add(&writes_);
    }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;
    ~Listening() { listeners_.remove(&writes_); }

 private:
    WriteListeners& listeners_;
    Writes& writes_;
};

Outcome apply(const AppletUse& used, std::vector<Setting>& settings) {
    Outcome outcome;
    const host::Snapshot before(*used);
    for (auto& setting : settings) setting.before = readOrNothing(*used, setting.type->name);
    {
        const Listening listening(*used.board->listeners, outcome.writes);
        for (const auto& setting : settings) {
            outcome.code = used->trySet(setting.type->name, setting.value);
            if (outcome.code != 0) break;
            ++outcome.done;
        }
    }
    for (auto& setting : settings) setting.after = readOrNothing(*used, setting.type->name);
    const auto wasAskedFor = [&](const host::Change& change) {
        if (host::isReadOut(change.parameter)) return true;
        for (std::size_t i = 0; i < outcome.done; ++i)
            if (change.aspect == host::Change::Aspect::HeldValue &&
                settings[i].type->name == change.parameter)
                return true;
        return false;
    };
    outcome.moved = host::changesBetween(before, host::Snapshot(*used));
    std::erase_if(outcome.moved, wasAskedFor);
    return outcome;
}

/// {"set": [(name, before, after)], "moved": [...], "writes": [...], "refused": exception or None}
nb::dict setMany(const AppletObject& object, const nb::list& pairs) {
    const auto used = object.useToSet();
    // Everything is read before anything is set: a mistake at the end changes nothing.
    std::vector<Setting> settings;
    for (nb::handle pair : pairs) {
        const auto& type = object.named(nb::handle(nb::object(pair[0])));
        settings.push_back({&type, fromPython(type, *used, pair[1])});
    }
    const Outcome outcome = unlocked([&] { return apply(used, settings); });

    nb::list set, moved;
    for (std::size_t i = 0; i < outcome.done; ++i) {
        const auto& setting = settings[i];
        set.append(nb::make_tuple(setting.type->name, orNone(*setting.type, *used, setting.before),
                                  orNone(*setting.type, *used, setting.after)));
    }
    for (const auto& change : outcome.moved)
        moved.append(nb::make_tuple(change.parameter, host::nameOf(change.aspect), change.before,
                                    change.after, change.unit));
    nb::dict result;
    result["set"] = set;
    result["moved"] = moved;
    result["writes"] = writesToPython(outcome.writes);
    result["refused"] = nb::none();
    if (outcome.code != 0) {
        const auto& refused = settings[outcome.done];
        result["refused"] = object.refusal(used, *refused.type, refused.value, outcome.code);
    }
    return result;
}

// ---- files ----

/// The tables that the file has no place for.
std::vector<std::string> save(const AppletObject& object, const fs::path& file) {
    const auto used = object.use();
    return unlocked([&] {
        used->save(file);
        return host::tablesLostInSave(*used);
    });
}

/// A value that the load skipped: (line, sentence, advice).
nb::list load(const AppletObject& object, const fs::path& file) {
    static_cast<void>(object.useToSet());
    const auto used = object.useRemembered();
    using Skipped = std::tuple<std::size_t, std::string, std::vector<std::string>>;
    const auto skipped = unlocked([&] {
        const auto before = used->twin();
        host::loadConfiguration(*used, file);
        const auto read = host::ConfigFile::read(file);
        std::vector<Skipped> result;
        for (const auto& value : host::skippedValues(*before, read))
            result.emplace_back(value.line->number, value.sentence(), value.advice());
        return result;
    });
    nb::list result;
    for (const auto& [line, sentence, advice] : skipped)
        result.append(nb::make_tuple(line, sentence, advice));
    return result;
}

/// (line, weight, text, advice)
nb::list check(const AppletObject& object, const fs::path& file) {
    const auto used = object.useRemembered();
    nb::list result;
    for (const auto& finding : unlocked([&] { return host::checkConfiguration(*used, file); }))
        result.append(
            nb::make_tuple(finding.line, host::textOf(finding.weight), finding.text, finding.advice));
    return result;
}

/// (name, first, second); an empty path is the applet.
nb::list diff(const AppletObject& object, const fs::path& first, const fs::path& second) {
    const auto used = object.useRemembered();
    nb::list result;
    for (const auto& difference : unlocked([&] { return host::differencesBetween(*used, first, second); })) {
        const auto& type = object.named(difference.parameter.name);
        result.append(nb::make_tuple(type.name, orNone(type, *used, difference.first.value),
                                     orNone(type, *used, difference.second.value)));
    }
    return result;
}

nb::dict info(const AppletObject& object) {
    const auto used = object.use();
    const auto about = host::aboutLibrary(used->library());
    nb::dict result, capabilities;
    for (const auto& [name, text] : about.texts) result[name.c_str()] = text;
    for (const auto& [selector, answer] : about.capabilities) capabilities[nb::int_(selector)] = answer;
    result["design type"] = about.designType;
    result["capabilities"] = capabilities;
    result["parameters"] = used->names().size();
    result["library"] = textToPython(used->library().file().string());
    result["icon"] = nb::bytes(about.icon.data(), about.icon.size());
    result["design image"] = nb::bytes(about.designImage.data(), about.designImage.size());
    return result;
}

}  // namespace

void bindReports(nb::class_<AppletObject>& type) {
    type.def("describe", &describe, nb::arg("name"))
        .def("description", &description, nb::arg("name"))
        .def("limits", &limits, nb::arg("name"))
        .def("drives", &drives, nb::arg("name"))
        .def("display_order", &displayOrder)
        .def("set_many", &setMany, nb::arg("pairs"))
        .def("save_file", &save, nb::arg("file"))
        .def("load_file", &load, nb::arg("file"))
        .def("check_file", &check, nb::arg("file"))
        .def("diff_files", &diff, nb::arg("first"), nb::arg("second"))
        .def("xml_text",
             [](const AppletObject& object) {
                 const auto used = object.use();
                 return unlocked([&] { return used->xml(); });
             })
        .def("info_dict", &info);
}

}  // namespace marovine::python
