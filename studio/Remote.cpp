#include "studio/Remote.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

#include "command/Json.h"
#include "command/Run.h"
#include "pictures/SafeFile.h"
#include "studio/Base64.h"
#include "studio/HttpClient.h"
#include "studio/Members.h"

namespace marovine::studio {

namespace fs = std::filesystem;
using host::Failure;
using host::Json;

namespace {

/// The line without --at and its value.
std::vector<std::string> withoutAddress(const std::vector<std::string>& arguments) {
    std::vector<std::string> rest;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--at") {
            ++i;
        } else if (!arguments[i].starts_with("--at=")) {
            rest.push_back(arguments[i]);
        }
    }
    return rest;
}

Json sentFile(const std::string& name) {
    std::error_code error;
    const auto status = fs::status(name, error);
    if (status.type() == fs::file_type::not_found) throw Failure("there is no file " + name);
    if (status.type() == fs::file_type::directory) throw Failure(name + " is a folder");
    std::ifstream in(name, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(in), {}};
    if (!in.is_open() || in.bad()) throw Failure(name + " cannot be read: " + std::strerror(errno));
    return {{"name", name}, {"base64", toBase64(content)}};
}

/// The document of an answer. Throws `Failure` when it comes from something else than a studio.
Json documentFrom(const Address& address, const Response& response) {
    try {
        return host::parsedJson(response.body);
    } catch (const Failure&) {
        throw Failure("what answers at " + address.host + ":" + address.port +
                      " is no studio; start one with `marovine studio`, which prints its address");
    }
}

/// What a studio answered to a command; throws what kept it from carrying the command out.
Json answerOf(const Address& address, const Response& response) {
    constexpr int kOk = 200;
    Json document = documentFrom(address, response);
    if (response.status == kOk) return document;
    const Json* error = document.find("error");
    const Json* message = error != nullptr ? error->find("message") : nullptr;
    throw Failure(message != nullptr && message->as<std::string>() != nullptr
                      ? *message->as<std::string>()
                      : "the studio answered with the code " + std::to_string(response.status));
}

/// Whether the line asked for this file: the one that it names, or one of several whose names begin like it.
bool isAskedFor(const fs::path& file, const std::vector<fs::path>& written) {
    return std::ranges::any_of(written, [&](const fs::path& asked) {
        return file.parent_path() == asked.parent_path() && !file.filename().empty() &&
               file.filename().string().starts_with(asked.stem().string());
    });
}

/// Writes only what the line asked for, as the studio may be anybody's.
int printAnswer(host::Session& session, const Json& answer, const std::vector<fs::path>& written) {
    const Members members(answer, "the studio's answer", {"status", "output", "errors", "files"});
    for (const auto& file : members.array("files")) {
        const Members one(file, "a file", {"name", "base64"});
        const auto content = fromBase64(one.text("base64"));
        if (!content) throw Failure("the studio sent a file that cannot be read");
        const std::string name = one.text("name");
        if (!isAskedFor(name, written))
            throw Failure("the studio sent the file " + name +
                          ", which was not asked for; it is not written");
        virtualboard::imaging::writeSafely(name, *content);
    }
    session.out() << members.text("output") << std::flush;
    session.errors().out() << members.text("errors") << std::flush;
    return static_cast<int>(*members.maybeNumber("status", 0, 255));
}

}  // namespace

int runRemotely(host::Session& session, const std::vector<std::string>& arguments) {
    return host::run(session, arguments, [&](const std::vector<host::NamedFile>& named) {
        if (session.options.address.empty()) return true;
        const Address address = parseAddress(session.options.address);
        Json files = Json::array();
        std::vector<fs::path> written;
        for (const auto& file : named) {
            if (file.role() == host::FileRole::Written) written.emplace_back(file.name());
            if (file.role() == host::FileRole::Read) files.push_back(sentFile(file.name()));
            if (file.role() == host::FileRole::None)
                throw host::UsageError("what is asked for with " + file.name() +
                                       " concerns no board; leave out --at");
        }
        const Json request{{"arguments", withoutAddress(arguments)},
                           {"files", std::move(files)},
                           {"width", session.console().width()},
                           {"colour", session.console().coloured()}};
        const Response response = post(address, "/api/command", host::printedOnOneLine(request));
        session.status = printAnswer(session, answerOf(address, response), written);
        return false;
    });
}

}  // namespace marovine::studio
