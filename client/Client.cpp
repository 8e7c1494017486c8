#include "client/Client.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <set>
#include <tuple>
#include <utility>

#include "base/IgnoreCase.h"
#include "base/Names.h"
#include "client/ConfigFile.h"
#include "client/Snapshot.h"

namespace marovine::host {

namespace {

/// A get of this id answers the description of the parameter whose name is passed in.
constexpr int kDescriptionId = 24114;
/// What the applet answers for a parameter without description.
constexpr std::string_view kNoDescription = "-";
constexpr int kEventBits = 64;
constexpr int kFlagAttach = 1;

/// Parameters whose set writes a file: repeating it on another instance would write the file again.
const std::set<std::string, std::less<>> writesFile{"FG_LUT_SAVE_FILE", "FG_DEBUGSAVECONFIG"};

/// Calls `visit` for each parameter node below `node` and its siblings, with the path of its groups.
void walk(const RegisterInfo& node, const std::string& path,
          const std::function<void(const RegisterInfo&, const std::string&)>& visit) {
    if (node.kind != FG_KIND_GROUP) return visit(node, path);
    const std::string name = node.displayName != nullptr ? utf8FromLatin1(node.displayName) : "";
    const std::string below = path.empty() ? name : path + " > " + name;
    for (int i = 0; i < node.value.group.childCount; ++i) walk(*node.value.group.children[i], below, visit);
}

/// A value of another numeric type, as the parameter's own.
Value inOwnType(std::string_view name, std::uint32_t kind, const Value& value) {
    const Value& own = emptyValueOf(kind);
    if (own.index() == value.index()) return value;
    if (const auto number = numberOf(value))
        if (auto converted = valueLike(own, *number)) return *converted;
    throw UnreadableValue(std::string(name) + ": " + textOf(value) + " does not fit the parameter's type");
}

}  // namespace

Applet::Applet(std::shared_ptr<const Library> library, std::unique_ptr<Device> device, OpenOptions options)
    : library_(std::move(library)), options_(options), device_(std::move(device)), instance_(*library_) {
    int error = 0;
    record()->instance =
        library_->stdEntry(device_->handle(), &error, options_.writeDefaults ? 0 : kFlagAttach);
    if (record()->instance == nullptr) throw Refused(error, "opening the applet");
    readTree();
}

std::unique_ptr<Applet> Applet::twin() const {
    return twinOf(steps());
}

std::unique_ptr<Applet> Applet::twinOf(const std::vector<Step>& steps) const {
    auto other = std::make_unique<Applet>(library_, device_->another(), options_);
    other->checkFile_ = checkFile_;
    other->shortenAt_ = std::numeric_limits<std::size_t>::max();  // it does not live long enough
    for (const Step& step : steps) {
        if (const auto* load = std::get_if<LoadStep>(&step)) {
            other->load(load->file);
            continue;
        }
        const auto& set = std::get<SetStep>(step);
        if (const auto* field = std::get_if<Field>(&set.value)) {
            other->setElements(set.name, set.firstElement, *field);
        } else if (!writesFile.contains(set.name)) {
            other->set(set.name, set.value);
        }
    }
    return other;
}

void Applet::remember(Step step) {
    {
        const std::lock_guard lock(stepsMutex_);
        steps_.push_back(std::move(step));
        if (steps_.size() < shortenAt_) return;
        shortenAt_ = 2 * steps_.size();  // should they not get fewer
    }
    // A program may set a few parameters for days.
    shortenSteps();
}

void Applet::shortenSteps() {
    const std::unique_lock alone(shorteningMutex_, std::try_to_lock);
    if (!alone) return;
    const std::vector<Step> many = steps();
    std::vector<Step> few = lastOnes(many);
    if (few.size() == many.size()) return;
    try {
        // This instance is in the state that the many led to, but for what it measures as time goes on.
        const auto measured = [&](const Change& change) {
            return change.aspect == Change::Aspect::HeldValue && !parameter(change.parameter).writable &&
                   std::ranges::none_of(few, [&](const Step& step) {
                       const auto* set = std::get_if<SetStep>(&step);
                       return set != nullptr && set->name == change.parameter;
                   });
        };
        if (!std::ranges::all_of(changesBetween(Snapshot(*this), Snapshot(*twinOf(few))), measured)) return;
    } catch (const Failure&) {
        return;  // some set needs one that was left out
    }
    const std::lock_guard lock(stepsMutex_);
    // What was remembered meanwhile stays.
    few.insert(few.end(), steps_.begin() + static_cast<std::ptrdiff_t>(many.size()), steps_.end());
    steps_ = std::move(few);
    shortenAt_ = steps_.size() + kManySteps;
}

std::vector<Applet::Step> Applet::lastOnes(const std::vector<Step>& steps) {
    std::vector<Step> result;
    std::set<std::tuple<std::string_view, std::uint32_t, std::size_t>>
        later;  // name, first element, elements
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        if (const auto* set = std::get_if<SetStep>(&*step)) {
            const auto* field = std::get_if<Field>(&set->value);
            const std::size_t size = field != nullptr ? field->size() : 1;
            if (!later.emplace(set->name, set->firstElement, size).second) continue;
        } else {
            later.clear();
        }
        result.push_back(*step);
    }
    std::ranges::reverse(result);
    return result;
}

std::vector<Applet::Step> Applet::steps() const {
    const std::lock_guard lock(stepsMutex_);
    return steps_;
}

void Applet::readTree() {
    const int count = library_->parameterCount(record());
    for (int i = 0; i < count; ++i) {
        const char* name = library_->parameterName(record(), i);
        if (name == nullptr) continue;
        names_.emplace_back(name);
        known_[name] = {.name = {}, .id = library_->parameterId(record(), i), .node = nullptr, .group = {}};
    }
    // The host's list of top-level groups begins with the newest: display order is the reverse.
    std::vector<const RegisterInfo*> groups;
    for (const auto* node = library_->parameterInfo(record(), 0); node != nullptr; node = node->next)
        groups.insert(groups.begin(), node);
    for (const auto* group : groups)
        walk(*group, {}, [this](const RegisterInfo& node, const std::string& path) {
            if (node.name == nullptr) return;
            known_[node.name] = {.name = {}, .id = node.address, .node = &node, .group = path};
            displayOrder_.emplace_back(node.name);
        });
    for (auto& [name, known] : known_) known.name = name;
}

const Applet::Known& Applet::known(std::string_view name) const {
    const auto found = known_.find(name);
    if (found != known_.end()) return found->second;
    throw UnknownName(std::string(name), nearestNames(name, names_));
}

const std::string& Applet::nameOf(std::string_view text) const {
    for (const auto& name : names_)
        if (equalIgnoringCase(name, text)) return name;
    throw UnknownName(std::string(text), nearestNames(text, names_));
}

std::vector<std::string> Applet::matching(std::string_view pattern) const {
    std::vector<std::string> result;
    for (const auto& name : names_)
        if (matchesPattern(name, pattern) || matchesPattern(parameter(name).displayName, pattern))
            result.push_back(name);
    if (result.empty()) throw Failure("no parameter's name or title matches " + std::string(pattern));
    return result;
}

std::vector<std::string> Applet::namedBy(std::string_view text) const {
    return isPattern(text) ? matching(text) : std::vector{nameOf(text)};
}

Parameter Applet::parameter(std::string_view name) const {
    const Known& entry = known(name);
    if (entry.node != nullptr) return readNode(*entry.node, entry.group);
    Parameter parameter;
    parameter.name = name;
    parameter.id = entry.id;
    parameter.kind = FG_KIND_UINT32;
    parameter.group = "Host Runtime";
    return parameter;
}

std::vector<Parameter> Applet::tree() const {
    std::vector<Parameter> result;
    for (const auto& name : displayOrder_) result.push_back(parameter(name));
    return result;
}

std::string Applet::description(std::string_view name) {
    // One buffer carries the name in and the address of the text out.
    std::vector<char> buffer(std::max(name.size() + 1, sizeof(char*)));
    std::copy(name.begin(), name.end(), buffer.begin());
    if (library_->get(record(), kDescriptionId, buffer.data(), 0, FG_TYPE_TEXT_POINTER) != 0) return {};
    char* text = nullptr;
    std::memcpy(&text, buffer.data(), sizeof text);
    std::string result = utf8FromLatin1(text);
    library_->freeText(record(), kDescriptionId, text, 0, FG_TYPE_TEXT_POINTER);
    return result == kNoDescription ? std::string() : result;
}

std::vector<Event> Applet::events() {
    std::vector<Event> result;
    for (int bit = 0; bit < kEventBits; ++bit) {
        const std::uint64_t mask = std::uint64_t{1} << bit;
        if (const char* name = library_->eventName(record(), mask)) result.push_back({name, mask});
    }
    return result;
}

Applet::Standing Applet::standing(std::string_view name) {
    Standing result{.value = {}, .range = range(name), .writable = writable(name)};
    try {
        result.value = get(name);
    } catch (const Refused&) {
    }
    return result;
}

std::optional<Range> Applet::range(std::string_view name) const {
    const Known& wanted = known(name);
    return wanted.node != nullptr ? rangeIn(*wanted.node) : std::nullopt;
}

bool Applet::writable(std::string_view name) const {
    const Known& wanted = known(name);
    if (wanted.node == nullptr) return false;
    return (__atomic_load_n(&wanted.node->accessFlags, __ATOMIC_RELAXED) & 2) != 0;
}

Value Applet::get(std::string_view name) {
    const Known& wanted = known(name);
    if (wanted.kind() == FG_KIND_UINT32_FIELD)
        return getElements(name, 0, wanted.node->value.uint32Field.elements);
    int result = 0;
    Value value = emptyValueOf(wanted.kind());
    std::visit(
        [&]<class T>(T& v) {
            if constexpr (std::is_same_v<T, std::string>) {
                char* text = nullptr;
                result = library_->get(record(), wanted.id, &text, 0, FG_TYPE_TEXT_POINTER);
                if (result != 0) return;
                v = text;
                library_->freeText(record(), wanted.id, text, 0, FG_TYPE_TEXT_POINTER);
            } else if constexpr (std::is_arithmetic_v<T>) {
                result = library_->get(record(), wanted.id, &v, 0, typeCodeOf(wanted.kind()));
            }
        },
        value);
    if (result != 0) throw Refused(result, std::string(name), "");
    return value;
}

Field Applet::getElements(std::string_view name, std::uint32_t first, std::uint32_t count) {
    const Known& wanted = known(name);
    Field elements(count);
    FieldParameterAccess access{
        .type = FG_TYPE_UINT32, .start = first, .count = count, .values = elements.data()};
    const int result = library_->get(record(), wanted.id, &access, 0, FG_TYPE_FIELD_ACCESS);
    if (result != 0) throw Refused(result, std::string(name), "");
    return elements;
}

void Applet::set(std::string_view name, const Value& value) {
    const int result = trySet(name, value);
    if (result == 0) return;
    const Parameter refused = parameter(name);
    throw Refused(result, refused.name, refused.textOf(inOwnType(name, refused.kind, value)));
}

int Applet::trySet(std::string_view name, const Value& value) {
    const Known& wanted = known(name);
    const Value own = inOwnType(name, wanted.kind(), value);
    if (const auto* elements = std::get_if<Field>(&own)) return trySetElements(name, 0, *elements);
    const void* data = std::visit(
        []<class T>(const T& v) -> const void* {
            if constexpr (std::is_same_v<T, std::string>) {
                return v.c_str();
            } else {
                return &v;
            }
        },
        own);
    if (const auto* file = std::get_if<std::string>(&own); file && !file->empty() && checkFile_)
        checkFile_(*file);
    const int result = library_->set(record(), wanted.id, data, 0, typeCodeOf(wanted.kind()));
    if (result == 0 && options_.rememberSteps) remember(SetStep{wanted.name, own, 0});
    return result;
}

void Applet::setElements(std::string_view name, std::uint32_t first, const Field& elements) {
    if (const int result = trySetElements(name, first, elements))
        throw Refused(result, std::string(name), textOf(elements));
}

int Applet::trySetElements(std::string_view name, std::uint32_t first, const Field& elements) {
    Field copy = elements;
    FieldParameterAccess access{.type = FG_TYPE_UINT32,
                                .start = first,
                                .count = static_cast<std::uint32_t>(copy.size()),
                                .values = copy.data()};
    const Known& wanted = known(name);
    const int result = library_->set(record(), wanted.id, &access, 0, FG_TYPE_FIELD_ACCESS);
    if (result == 0 && options_.rememberSteps) remember(SetStep{wanted.name, std::move(copy), first});
    return result;
}

std::optional<Value> Applet::lastSet(std::string_view name) const {
    const std::lock_guard lock(stepsMutex_);
    for (auto step = steps_.rbegin(); step != steps_.rend(); ++step) {
        const auto* set = std::get_if<SetStep>(&*step);
        if (set == nullptr) return std::nullopt;
        if (set->name == name && !std::holds_alternative<Field>(set->value)) return set->value;
    }
    return std::nullopt;
}

std::vector<std::string> Applet::filesInSteps() const {
    std::vector<std::string> files;
    for (const Step& step : steps()) {
        if (const auto* load = std::get_if<LoadStep>(&step)) {
            files.push_back(load->file);
        } else if (const auto* text = std::get_if<std::string>(&std::get<SetStep>(step).value)) {
            files.push_back(*text);
        }
    }
    return files;
}

std::vector<std::string> Applet::tablesSet() const {
    const std::lock_guard lock(stepsMutex_);
    std::set<std::string_view> set;
    for (const auto& step : steps_)
        if (const auto* one = std::get_if<SetStep>(&step); one && std::holds_alternative<Field>(one->value))
            set.insert(one->name);
    std::vector<std::string> result;
    std::ranges::copy_if(names_, std::back_inserter(result),
                         [&](const auto& name) { return set.contains(name); });
    return result;
}

void Applet::save(const std::filesystem::path& file) {
    const int result = library_->saveConfig(record(), file.c_str());
    if (result != 0) throw Refused(result, "saving the configuration to " + file.string());
}

void Applet::load(const std::filesystem::path& file) {
    if (checkFile_) {
        const ConfigFile read = ConfigFile::read(file);
        for (const auto* named : filesNamedIn(read)) checkFile_(named->value);
    }
    const int result = library_->loadConfig(record(), file.c_str());
    if (result != 0) throw Refused(result, "loading the configuration " + file.string());
    if (options_.rememberSteps) remember(LoadStep{.file = file});
}

std::string Applet::xml() {
    std::size_t size = 0;
    library_->parameterInfoXml(record(), 0, nullptr, &size);
    std::string text(size, '\0');
    const int result = library_->parameterInfoXml(record(), 0, text.data(), &size);
    if (result != 0) throw Refused(result, "the XML description");
    text.resize(std::strlen(text.c_str()));
    return text;
}

}  // namespace marovine::host
