/// What every setter writes, refuses, puts back and narrows: the tables under settings/, one test a section.
///
/// A table is read line by line; an indented line continues the one above it, "#" begins a comment.
///
///     == Title                      a section: an applet of its own with the defaults
///     with a=1 b=2                  runs the section with $a and $b; one test for each such line. Above the
///                                   first section, for all of them. "each" takes the braces here
///     def name(a, b) = WRITES       a list of writes for @name(1, 2)
///     NAME VALUE -> WRITES          sets; all its writes, split by ";", each as the design's name and value.
///                                   Each is refused in turn before: that ends it and puts the value back
///     NAME VALUE => WRITES          the same without refused writes and without reading the value back
///     NAME... !CODE VALUE...        refused with CODE (left away: out of range), before anything changes
///     given NAME VALUE ...          sets, whatever it writes
///     fail N NAME VALUE             sets, its N-th write is refused
///     fails CODE N NAME VALUE       sets; refused with CODE after N writes, the parameter reads as before
///     get NAME VALUE, max           what a read, or the registered maximum, gives; a read may fail: !CODE
///     access FLAGS NAME...          the registered access flags
///     read NAME DESIGN VALUE        a read-out: follows the design, fails with it, cannot be set
///     load NAME VALUE               leaves a value in the cache that a setter may refuse
///     force, design NAME VALUE      a value of the board's
///     lut, cached IN:OUT,IN:OUT...  entries of all three tables, in the applet and the design or in the
///                                   applet alone
///     mute NAME..., deny NAME...    reads, or writes, of the design's NAME are refused until "heal"
///     mute N                        the N-th read from now is refused, once
///     reopen FLAGS, hide NAME       opens the applet again, which writes the defaults unless FLAGS is odd; a
///                                   design that lacks NAME
///     advance SECONDS               moves the board's clock
///     refusals CODE                 what the applet makes of the code of a refused write
///
/// "{a|b}" in a line stands for one line with a and one with b, all braces of it together.

#include <cmath>
#include <filesystem>
#include <set>

#include "tests/SettingTable.h"
#include "tests/TemporaryFile.h"

namespace marovine::test {
namespace {

/// A code that nothing but an injected fault answers.
constexpr int kInjected = -4711;

/// What was written, whole tables in short. Refused writes must say so.
Writes takeWrites(OpenApplet& applet, std::size_t refused = 0) {
    const auto journal = applet.board().takeWrites();
    for (std::size_t i = 0; i < journal.size(); ++i)
        EXPECT_EQ(i + 1 == refused ? kInjected : 0, journal[i].result) << "in the journal: " << i;
    auto writes = inTestForm(journal);
    for (auto& write : writes)
        if (std::ranges::count(write.value, ',') == 255) write.value = "table";
    return writes;
}

class SettingsTest : public testing::Test {
 public:
    SettingsTest(const Section& section, const Variables& variables)
        : section_(section), variables_(variables) {}

    void TestBody() override {
        applet_.takeWrites();
        applet_.board().setClockManual();
        for (const auto& [number, text] : section_.lines)
            for (const auto& line : alternatives(withVariables(text, variables_))) {
                SCOPED_TRACE(section_.file + ":" + std::to_string(number) + ": " + line);
                try {
                    run(line);
                } catch (const std::exception& error) {
                    ADD_FAILURE() << "the table is wrong: " << error.what();
                }
            }
        applet_.board().clearOpeningFaults();
    }

 private:
    static const SdkParameter& row(const std::string& name) {
        const auto* found = findSdkParameter(name);
        if (found == nullptr) throw std::runtime_error("no parameter " + name);
        return *found;
    }
    std::string designName(const std::string& name) {
        for (const char* prefix : {"", "Device1_Process0_", "Device1_Process1_"}) {
            try {
                applet_.board().value(prefix + name);
                return prefix + name;
            } catch (const std::out_of_range&) {
            }
        }
        throw std::runtime_error("no design parameter " + name);
    }

    int set(const std::string& name, const Value& value) {
        const int id = row(name).id;
        const auto give = [&](const void* place) {
            return Fg_setParameterWithType(applet_.record(), id, place, 0, FG_TYPE_UINT32);
        };
        return std::visit(
            [&]<class T>(const T& v) {
                if constexpr (std::is_same_v<T, std::string>)
                    return give(v.c_str());
                else
                    return give(&v);
            },
            value);
    }
    int set(const std::string& name, const std::string& text) {
        return set(name, valueOf(row(name).type, text));
    }
    /// The value, or the code of a refused read.
    std::pair<int, Value> get(const std::string& name) {
        Value value = valueOf(row(name).type, row(name).type == ValueType::Text ? "' '" : "0");
        std::vector<char> text(700000);
        const int code = std::visit(
            [&]<class T>(T& v) {
                void* place = &v;
                if constexpr (std::is_same_v<T, std::string>) place = text.data();
                return Fg_getParameterWithType(applet_.record(), row(name).id, place, 0, FG_TYPE_TEXT);
            },
            value);
        if (std::holds_alternative<std::string>(value)) value = std::string(text.data());
        return {code, value};
    }
    void expectSetting(const std::string& name, const Value& value, const Writes& writes, bool sweep) {
        const auto before = get(name);
        for (std::size_t n = 1; sweep && n <= writes.size(); ++n) {
            applet_.board().refuseNthWrite(static_cast<unsigned>(n), kInjected);
            EXPECT_EQ(refusal_, set(name, value)) << "write " << n << " refused";
            EXPECT_EQ(refusal_, applet_.lastError());
            EXPECT_EQ(Writes(writes.begin(), writes.begin() + static_cast<std::ptrdiff_t>(n)),
                      takeWrites(applet_, n));
            EXPECT_EQ(before, get(name)) << "write " << n << " refused";
        }
        EXPECT_EQ(0, set(name, value));
        EXPECT_EQ(0, applet_.lastError());
        EXPECT_EQ(writes, takeWrites(applet_));
        if (sweep) {
            EXPECT_EQ(std::pair(0, value), get(name));
        }
    }
    void expectRefused(const std::string& name, const std::string& value, int code) {
        SCOPED_TRACE(name + " = " + value);
        const auto before = get(name);
        EXPECT_EQ(code, set(name, value));
        EXPECT_EQ(code, applet_.lastError());
        EXPECT_EQ(Writes{}, takeWrites(applet_));
        if (before.second == before.second) {
            EXPECT_EQ(before, get(name));
        }
    }
    void expectValue(const std::string& name, const std::string& expected) {
        const auto [code, value] = get(name);
        if (expected.front() == '!') {
            EXPECT_EQ(std::stoi(expected.substr(1)), code);
        } else {
            EXPECT_EQ(0, code);
            EXPECT_EQ(valueOf(row(name).type, expected), value);
        }
    }
    void expectMaximum(const std::string& name, const std::string& expected) {
        const auto& node = applet_.node(name);
        EXPECT_EQ(std::stod(expected),
                  node.kind == FG_KIND_DOUBLE ? node.value.real.maximum : node.value.uint32.maximum);
    }

    /// As a configuration file does: what the setter refuses stays in the cache.
    void load(const std::string& name, const std::string& value) {
        const TemporaryFile file(".mcf");
        ASSERT_EQ(0, Fg_saveConfig(applet_.record(), file.name()));
        std::string text = file.content();
        const auto from = text.find("\n" + name + "=") + name.size() + 2;
        text.replace(from, text.find(';', from) - from, value);
        file.write(text);
        EXPECT_EQ(0, Fg_loadConfig(applet_.record(), file.name()));
        applet_.takeWrites();
    }
    /// A value in the type that the design's parameter has.
    virtualboard::Value boardValue(const std::string& name, const std::string& text) {
        return std::visit(
            [&]<class T>(const T&) -> virtualboard::Value {
                if constexpr (std::is_same_v<T, std::string>)
                    return std::get<std::string>(valueOf(ValueType::Text, text));
                else if constexpr (std::is_same_v<T, double>)
                    return std::stod(text);
                else if constexpr (std::is_arithmetic_v<T>)
                    return static_cast<T>(std::get<std::int64_t>(valueOf(ValueType::Int64, text)));
                else
                    throw std::runtime_error(name + " is a field");
            },
            applet_.board().value(name));
    }
    void expectReadOut(const std::string& name, const std::string& design, const std::string& value) {
        applet_.board().force(design, boardValue(design, value));
        expectValue(name, value);
        applet_.board().refuseReads(design, kInjected);
        EXPECT_EQ(refusal_, get(name).first);
        applet_.board().refuseReads(design, 0);
        if (row(name).access == Access::ReadOnly) expectRefused(name, value, error::notAllowed);
    }
    void expectEntry(const std::string& pair, bool inDesign) {
        const auto input = static_cast<std::size_t>(std::stoi(pair));
        const auto output = static_cast<std::uint32_t>(std::stoul(pair.substr(pair.find(':') + 1)));
        for (const std::string channel : {"RED", "GREEN", "BLUE"}) {
            FieldParameterInt entry{.value = 999, .index = static_cast<std::uint32_t>(input)};
            EXPECT_EQ(0, Fg_getParameterWithType(applet_.record(), row("FG_LUT_VALUE_" + channel).id, &entry,
                                                 0, FG_TYPE_FIELD_INT));
            EXPECT_EQ(output, entry.value) << channel << " of " << input;
            const auto design = "Device1_Process0_LookupTable_" + channel.substr(0, 1) + "_LUTcontent";
            const auto table = std::get<std::vector<std::uint32_t>>(applet_.board().value(design));
            EXPECT_EQ(output, inDesign ? table.at(input) : output);
        }
    }

    void run(const std::string& line) {
        for (const bool sweep : {true, false})
            if (const auto arrow = line.find(sweep ? " ->" : " =>"); arrow != std::string::npos) {
                const Words words = split(line.substr(0, arrow), ' ');
                const auto writes = writesOf(section_, line.substr(arrow + 3));
                return expectSetting(words.at(0), valueOf(row(words[0]).type, words.at(1)), writes, sweep);
            }
        const Words words = split(line, ' ');
        const std::string& verb = words[0];
        const std::string name = words.size() > 1 ? words[1] : "";
        const auto mark = std::find_if(words.begin(), words.end(), [](const auto& w) { return w[0] == '!'; });
        if (verb == "given") {
            for (std::size_t i = 1; i < words.size(); i += 2)
                EXPECT_EQ(0, set(words[i], words.at(i + 1))) << words[i];
            applet_.takeWrites();
        } else if (verb == "fail") {
            const auto n = static_cast<unsigned>(std::stoul(name));
            applet_.board().refuseNthWrite(n, kInjected);
            EXPECT_EQ(refusal_, set(words.at(2), words.at(3)));
            EXPECT_EQ(n, takeWrites(applet_, n).size());
        } else if (verb == "fails") {
            const auto before = get(words.at(3));
            EXPECT_EQ(std::stoi(name), set(words[3], words.at(4)));
            EXPECT_EQ(std::stoi(name), applet_.lastError());
            EXPECT_EQ(std::stoul(words[2]), applet_.board().takeWrites().size());
            EXPECT_EQ(before, get(words[3]));
        } else if (verb == "get") {
            expectValue(name, words.at(2));
        } else if (verb == "max") {
            expectMaximum(name, words.at(2));
        } else if (verb == "access") {
            for (std::size_t i = 2; i < words.size(); ++i)
                EXPECT_EQ(std::stoi(name), applet_.node(words[i]).accessFlags) << words[i];
        } else if (verb == "read") {
            expectReadOut(name, designName(words.at(2)), words.at(3));
        } else if (verb == "load") {
            load(name, words.at(2));
        } else if (verb == "force") {
            const auto full = designName(name);
            applet_.board().force(full, boardValue(full, words.at(2)));
        } else if (verb == "design") {
            const auto full = designName(name);
            EXPECT_EQ(boardValue(full, words.at(2)), applet_.board().value(full));
        } else if (verb == "lut" || verb == "cached") {
            for (const auto& pair : split(name, ',')) expectEntry(pair, verb == "lut");
        } else if (verb == "mute" && std::isdigit(name[0]) != 0) {
            applet_.board().refuseNthRead(static_cast<unsigned>(std::stoul(name)), kInjected);
        } else if (verb == "mute" || verb == "deny") {
            for (std::size_t i = 1; i < words.size(); ++i) {
                const auto full = designName(words[i]);
                verb == "mute" ? applet_.board().refuseReads(full, kInjected)
                               : applet_.board().refuseWrites(full, kInjected);
            }
        } else if (verb == "heal") {
            applet_.board().clearFaults();
            applet_.takeWrites();
        } else if (verb == "reopen") {
            const int flags = std::stoi(name);
            applet_.reopen(flags);
            EXPECT_EQ(flags % 2 != 0, applet_.takeWrites().empty())
                << "only the first flag keeps defaults away";
        } else if (verb == "hide") {
            applet_.board().hide(designName(name));
        } else if (verb == "advance") {
            applet_.board().advanceClock(std::stod(name));
        } else if (verb == "refusals") {
            refusal_ = std::stoi(name);
        } else if (mark != words.end()) {
            const int code = mark->size() == 1 ? error::outOfRange : std::stoi(mark->substr(1));
            for (auto one = words.begin(); one != mark; ++one)
                for (auto value = mark + 1; value != words.end(); ++value) expectRefused(*one, *value, code);
        } else {
            throw std::runtime_error("not understood");
        }
    }

    const Section& section_;
    const Variables& variables_;
    OpenApplet applet_;
    int refusal_ = kInjected;
};

std::vector<Section> readAllTables() {
    std::vector<Section> all;
    for (const auto& entry : std::filesystem::directory_iterator(SETTINGS_FOLDER))
        for (auto& section : readTable(entry.path())) all.push_back(std::move(section));
    return all;
}

const std::vector<Section>& allSections() {
    static const auto all = readAllTables();
    return all;
}

/// Letters and digits, words begun with a capital.
std::string testName(const std::string& text) {
    std::string name;
    bool begins = true;
    for (const char c : text) {
        if (std::isalnum(static_cast<unsigned char>(c)) != 0)
            name += begins ? static_cast<char>(std::toupper(static_cast<unsigned char>(c))) : c;
        begins = std::isalnum(static_cast<unsigned char>(c)) == 0;
    }
    return name;
}

[[maybe_unused]] const bool registered = [] {
    for (const auto& section : allSections())
        for (const auto& variables : section.instances) {
            std::string name = testName(section.title);
            if (!variables.empty()) name += std::to_string(&variables - section.instances.data() + 1);
            testing::RegisterTest(
                ("Settings_" + testName(std::filesystem::path(section.file).stem())).c_str(), name.c_str(),
                nullptr, nullptr, section.file.c_str(), section.lines.front().first,
                [&section, &variables] { return new SettingsTest(section, variables); });
        }
    return true;
}();

/// All settings of a section: the parameter, and its writes.
std::vector<std::pair<std::string, Writes>> settingsOf(const Section& section) {
    std::vector<std::pair<std::string, Writes>> settings;
    for (const auto& variables : section.instances)
        for (const auto& line : section.lines)
            for (const auto& one : alternatives(withVariables(line.second, variables)))
                if (const auto arrow = std::min(one.find(" ->"), one.find(" =>")); arrow < one.size())
                    settings.emplace_back(one.substr(0, one.find(' ')),
                                          writesOf(section, one.substr(arrow + 3)));
    return settings;
}

TEST(SettingsTables, HaveARowForEverySetter) {
    std::set<std::string> set;
    for (const auto& section : allSections())
        for (const auto& setting : settingsOf(section)) set.insert(setting.first);
    for (const auto& row : sdkParameters)
        if (row.access == Access::ReadWrite && row.type != ValueType::UInt32Field &&
            row.type != ValueType::Text) {  // texts are files
            EXPECT_TRUE(set.contains(row.name)) << row.name;
        }
}

TEST(StartUp, WritesTheDefaultsInOrderAndSkipsARefusedOne) {
    const auto& sections = allSections();
    const auto defaults = settingsOf(*std::ranges::find(sections, std::string("Defaults"), &Section::title));
    auto listed = defaults.begin();
    for (const auto& row : sdkParameters)
        if (!std::holds_alternative<std::monostate>(row.defaultValue)) {
            EXPECT_EQ(row.name, listed++->first);
        }
    ASSERT_EQ(defaults.end(), listed);

    OpenApplet applet;
    applet.takeWrites();
    unsigned before = 0;
    for (auto refused = defaults.begin();; ++refused) {  // at last none
        const bool any = refused != defaults.end();
        if (any && refused->second.empty()) continue;
        // The first write of a default is refused, which ends it.
        if (any) applet.board().refuseNthWrite(before + 1, kInjected);
        applet.reopen(0);
        Writes expected;
        for (auto setting = defaults.begin(); setting != defaults.end(); ++setting)
            expected.insert(expected.end(), setting->second.begin(),
                            setting == refused ? setting->second.begin() + 1 : setting->second.end());
        ASSERT_EQ(expected, takeWrites(applet, any ? before + 1 : 0));
        if (!any) return;
        before += static_cast<unsigned>(refused->second.size());
    }
}

}  // namespace
}  // namespace marovine::test
