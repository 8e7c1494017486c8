#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "command/Json.h"
#include "command/commands/Commands.h"

namespace marovine::host::commands {

namespace {

std::string hexadecimal(std::uint64_t mask) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%016llx", static_cast<unsigned long long>(mask));
    return text.data();
}

void run(bool json, Session& session) {
    Table table({"bit", "mask", "event"});
    table.alignRight(0);
    Json document = Json::array();
    for (const auto& event : session.applet().events()) {
        const int bit = std::countr_zero(event.mask);
        if (json) {
            document.push_back({{"name", event.name}, {"bit", bit}, {"mask", event.mask}});
        } else {
            table.add({std::to_string(bit), hexadecimal(event.mask), event.name});
        }
    }
    if (json) {
        session.console().out() << printed(document) << '\n';
    } else {
        table.print(session.console());
    }
}

}  // namespace

void defineEvents(CommandLine command, Session& session) {
    auto json = std::make_shared<bool>(false);
    command.flag("--json", *json, "As a JSON array");
    command.action([json, &session] { run(*json, session); });
}

}  // namespace marovine::host::commands
