/// One sweep over all setters: every design write of every setter fails in turn, and the parameter reads as
/// before.

#include <cmath>
#include <optional>
#include <set>

#include "tables/Catalogue.h"
#include "tests/AppletFixture.h"

namespace marovine::test {
namespace {

/// A value in the type of a parameter, as it crosses the host's untyped pointer.
using Raw = std::variant<std::int32_t, std::uint32_t, std::uint64_t, double, std::string>;

/// Parameters whose read asks the design or is put together from others: what a failed set leaves there is
/// stated by their own tests.
const std::set<std::string_view> readElsewhere{
    "FG_CAMERASIMULATOR_WIDTH",
    "FG_CAMERASIMULATOR_LINE_GAP",
    "FG_CAMERASIMULATOR_FRAME_GAP",
    "FG_CAMERASIMULATOR_LINERATE",
    "FG_CAMERASIMULATOR_PIXEL_FREQUENCY",
    "FG_CAMERASIMULATOR_FRAMERATE",
    "FG_DIGIO_OUTPUT",
    "FG_CCSEL0",
    "FG_CCSEL1",
    "FG_CCSEL2",
    "FG_CCSEL3",
    "FG_DEBUGINENABLE",
    "FG_DEBUGOUTENABLE",
    "FG_DEBUGFILE",
};

class WriteFailureSweep : public AppletTest {
 protected:
    int set(const SdkParameter& row, const Raw& value) {
        if (const auto* text = std::get_if<std::string>(&value))
            return Fg_setParameterWithType(applet.record(), row.id, text->c_str(), 0, FG_TYPE_TEXT);
        return std::visit(
            [&](const auto& v) {
                return Fg_setParameterWithType(applet.record(), row.id, &v, 0, FG_TYPE_UINT32);
            },
            value);
    }

    Raw get(const SdkParameter& row) {
        switch (row.type) {
            case ValueType::Double:
                return applet.get<double>(row.name);
            case ValueType::UInt64:
                return applet.get<std::uint64_t>(row.name);
            case ValueType::UInt32:
                return applet.get<std::uint32_t>(row.name);
            case ValueType::Text:
                return applet.getText(row.name);
            default:
                return applet.get<std::int32_t>(row.name);
        }
    }

    /// Values worth trying, as the registry shows them: another entry, another step of the range.
    std::vector<Raw> candidates(const SdkParameter& row) {
        const auto& value = applet.node(row.name).value;
        switch (applet.node(row.name).kind) {
            case FG_KIND_ENUMERATION: {
                std::vector<Raw> entries;
                for (int i = 0; i < value.enumeration.count; ++i)
                    entries.emplace_back(value.enumeration.values[i]);
                return entries;
            }
            case FG_KIND_UINT32: {
                const auto& range = value.uint32;
                const std::uint32_t step = std::max(range.increment, 1u);
                return {range.minimum, range.minimum + step, range.maximum};
            }
            case FG_KIND_INT32:
                return {std::int32_t{0}, std::int32_t{2}};
            case FG_KIND_UINT64:
                return {std::uint64_t{5}};
            case FG_KIND_DOUBLE:
                return {value.real.minimum + 1.0, value.real.maximum / 2};
            case FG_KIND_TEXT:
                return {Raw(std::string("sweep"))};
            default:
                return {};
        }
    }
};

TEST_F(WriteFailureSweep, RestoresTheParameterAtEachWrite) {
    constexpr int refusal = -4242;
    int setters = 0;
    int writes = 0;
    for (const auto& row : sdkParameters) {
        if (row.access == Access::ReadOnly || row.type == ValueType::UInt32Field) continue;
        if (std::string_view(row.name) == "FG_LUT_SAVE_FILE" ||
            std::string_view(row.name) == "FG_DEBUGSAVECONFIG")
            continue;  // write files, not the design
        const Raw before = get(row);
        // A value that is accepted, reaches the design, and whose number of writes is then known.
        std::optional<Raw> chosen;
        std::size_t count = 0;
        for (const auto& candidate : candidates(row)) {
            applet.takeWrites();
            if (candidate == before || set(row, candidate) != 0) continue;
            count = applet.takeWrites().size();
            chosen = candidate;
            set(row, before);
            if (count > 0) break;
        }
        if (!chosen || count == 0) continue;
        ++setters;
        for (unsigned n = 1; n <= count; ++n) {
            applet.board().refuseNthWrite(n, refusal);
            const int result = set(row, *chosen);
            applet.board().clearFaults();
            // Debug points report every refusal of the design as an internal failure.
            const bool debugPoint = std::string_view(row.name).starts_with("FG_DEBUG");
            EXPECT_EQ(debugPoint ? error::internalFailure : refusal, result) << row.name << ", write " << n;
            EXPECT_EQ(result, applet.lastError());
            if (!readElsewhere.contains(row.name)) {
                EXPECT_EQ(before, get(row)) << row.name << ", write " << n;
            }
            set(row, before);
            ++writes;
        }
    }
    EXPECT_GT(setters, 85) << "the sweep reaches nearly all setters";
    EXPECT_GT(writes, 150);
}

}  // namespace
}  // namespace marovine::test
