#include "gentl/Module.h"

#include <dlfcn.h>

#include <array>

#include <boost/uuid/detail/sha1.hpp>

#include "base/AppletIdentity.h"
#include "gentl/XmlText.h"

namespace marovine::gentl {

namespace {

/// Far above the registers.
constexpr std::uint64_t kDocument = 0x40000000;

std::array<std::uint8_t, 20> sha1(const std::string& text) {
    boost::uuids::detail::sha1 hash;
    hash.process_bytes(text.data(), text.size());
    unsigned words[5];
    hash.get_digest(words);
    std::array<std::uint8_t, 20> bytes{};
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(words[i / 4] >> (24 - 8 * (i % 4)));
    return bytes;
}

}  // namespace

void Module::close() {
    closeEvents();
    Handles::instance().remove(*this);
}

const Module::Document& Module::document() {
    const std::lock_guard lock(making_);
    if (document_ == nullptr) {
        auto made = std::make_unique<Document>(sort_, std::string("Marovine, ") + sort_ + " " + id_);
        describe(made->nodes);
        made->text = made->nodes.document();
        document_ = std::move(made);
    }
    return *document_;
}

void Module::readPort(std::uint64_t address, Bytes out) {
    const Document& all = document();
    if (address < kDocument || address - kDocument >= all.text.size())
        return all.nodes.registers().read(address, out);
    const std::size_t offset = address - kDocument;
    if (out.empty() || out.size() > all.text.size() - offset)
        throw Error(GC_ERR_INVALID_PARAMETER, "the document has " + std::to_string(all.text.size()) +
                                                  " bytes; read one or more of them");
    std::memcpy(out.data(), all.text.data() + offset, out.size());
}

void Module::writePort(std::uint64_t address, ConstBytes data) {
    const Document& all = document();
    if (!mayWrite()) throw Error(GC_ERR_ACCESS_DENIED, "the device was opened for reading only");
    if (address >= kDocument && address - kDocument < all.text.size())
        throw Error(GC_ERR_ACCESS_DENIED, "the document cannot be written");
    all.nodes.registers().write(address, data);
}

void Module::portInfo(PORT_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) const {
    Answer answer(type, buffer, size);
    switch (command) {
        case PORT_INFO_ID:
            return answer.text(id_);
        case PORT_INFO_VENDOR:
            return answer.text(identity::manufacturer);
        case PORT_INFO_MODEL:
            return answer.text(identity::name);
        case PORT_INFO_TLTYPE:
            return answer.text(kTechnology);
        case PORT_INFO_MODULE:
        case PORT_INFO_PORTNAME:
            return answer.text(sort_);
        case PORT_INFO_LITTLE_ENDIAN:
        case PORT_INFO_ACCESS_READ:
            return answer.boolean(true);
        case PORT_INFO_ACCESS_WRITE:
            return answer.boolean(mayWrite());
        case PORT_INFO_BIG_ENDIAN:
        case PORT_INFO_ACCESS_NA:
        case PORT_INFO_ACCESS_NI:
            return answer.boolean(false);
        case PORT_INFO_VERSION:
            return answer.text(identity::version);
        default:
            unknownCommand("a port", command);
    }
}

std::string Module::url() {
    return "Local:" + fileName() + ";" + hexadecimal(kDocument) + ";" + hexadecimal(document().text.size()) +
           "?SchemaVersion=1.1.0";
}

void Module::urlInfo(URL_INFO_CMD command, INFO_DATATYPE* type, void* buffer, std::size_t* size) {
    Answer answer(type, buffer, size);
    switch (command) {
        case URL_INFO_URL:
            return answer.text(url());
        case URL_INFO_SCHEMA_VER_MAJOR:
        case URL_INFO_SCHEMA_VER_MINOR:
        case URL_INFO_FILE_VER_MAJOR:
            return answer.int32(1);
        case URL_INFO_FILE_VER_MINOR:
        case URL_INFO_FILE_VER_SUBMINOR:
            return answer.int32(0);
        case URL_INFO_FILE_SHA1_HASH:
            return answer.bytes(sha1(document().text));
        case URL_INFO_FILE_REGISTER_ADDRESS:
            return answer.uint64(kDocument);
        case URL_INFO_FILE_SIZE:
            return answer.uint64(document().text.size());
        case URL_INFO_SCHEME:
            return answer.int32(URL_SCHEME_LOCAL);
        case URL_INFO_FILENAME:
            return answer.text(fileName());
        default:
            unknownCommand("a document", command);
    }
}

const std::string& producerFile() {
    static const std::string file = [] {
        Dl_info info{};
        dladdr(reinterpret_cast<const void*>(&producerFile), &info);
        return std::string(info.dli_fname != nullptr ? info.dli_fname : "");
    }();
    return file;
}

}  // namespace marovine::gentl
