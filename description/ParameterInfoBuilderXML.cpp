#include "description/ParameterInfoBuilderXML.h"

#include <map>
#include <string_view>
#include <utility>

#include "description/Category.h"
#include "description/Filters.h"

namespace {

constexpr const char* kRootName = "Root";
/// Line feed first: hosts parse the document with the two in this order.
constexpr std::string_view kAfterFeature = "\n\r";
/// Bytes; room for the whole document, because growing to this size costs more than writing it.
constexpr std::size_t kUsualSize = std::size_t{192} * 1024;

std::string_view textOf(const char* text) {
    return text == nullptr ? "" : text;
}

std::map<int, std::string_view> entriesOf(const RegisterInfo& info) {
    const auto& enumeration = info.value.enumeration;
    std::map<int, std::string_view> entries;
    for (int i = 0; i < enumeration.count; ++i) {
        const std::string_view name = textOf(enumeration.displayNames[i]);
        if (!name.empty()) entries.insert_or_assign(enumeration.values[i], name);
    }
    return entries;
}

/// Writes the feature of a parameter; false when parameters of its kind are not described.
bool writeFeature(ParameterInfoGeneratorXML& generator, const RegisterInfo& info) {
    const auto& value = info.value;
    // A negative limit is handed on with its sign extended to 64 bits.
    const auto wide = [](std::int32_t limit) { return static_cast<std::uint64_t>(std::int64_t{limit}); };
    switch (info.kind) {
        case FG_KIND_UINT32:
            generator.infoGenerate(info, value.uint32.minimum, marovine::loadField(value.uint32.maximum),
                                   value.uint32.increment);
            return true;
        case FG_KIND_INT32:
            generator.infoGenerate(info, wide(value.int32.minimum), wide(value.int32.maximum),
                                   wide(value.int32.increment));
            return true;
        case FG_KIND_ENUMERATION:
            generator.infoGenerate(info, entriesOf(info));
            return true;
        case FG_KIND_TEXT:
            generator.infoGenerate(info);
            return true;
        case FG_KIND_DOUBLE:
            generator.infoGenerate(info, value.real.minimum, marovine::loadField(value.real.maximum));
            return true;
        default:
            return false;
    }
}

}  // namespace

/// The steps of the builder, and the categories found so far.
class ParameterInfoBuilderXMLPrivate {
 public:
    ParameterInfoBuilderXMLPrivate(const Fg_ParameterInfo& registry, std::string modelName, int port)
        : registry_(registry), modelName_(std::move(modelName)), port_(port) {}

    std::string build();
    const std::vector<ParameterInfoBuilderXML::Described>& described() const { return described_; }

 private:
    void processRegisterInfo(std::string& document, const RegisterInfo* node, const RegisterInfo* parent);
    void buildParamDescr(std::string& document, const RegisterInfo& info, const RegisterInfo* parent);
    Category& categoryOf(const RegisterInfo* parent);
    void writeCategory(std::string& document, const Category& category) const;

    const Fg_ParameterInfo& registry_;
    std::string modelName_;
    int port_;
    Category root_{kRootName};
    std::vector<ParameterInfoBuilderXML::Described> described_;
};

std::string ParameterInfoBuilderXMLPrivate::build() {
    root_ = Category(kRootName);
    described_.clear();
    std::string document;
    document.reserve(kUsualSize);
    document += R"(<?xml version="1.0" encoding="utf-8"?>

<RegisterDescription
ModelName=")";
    document += xmlStringFilter(modelName_);
    document += R"("
VendorName="Tavrion"
StandardNameSpace="None"
SchemaMajorVersion="1"
SchemaMinorVersion="0"
SchemaSubMinorVersion="1"
MajorVersion="1"
MinorVersion="0"
SubMinorVersion="0"
ProductGuid="0"
VersionGuid="0"
xmlns="http://www.genicam.org/GenApi/Version_1_0"
xmlns:xsi="http://www.w3.org/2001/XMLSchema-instance"
xsi:schemaLocation="http://www.genicam.org/GenApi/Version_1_0 GenApiSchema_Version_1_0.xsd"
>
)";
    processRegisterInfo(document, registry_.getRegisterInfo(port_), nullptr);
    writeCategory(document, root_);
    document += "<Port Name=\"DevicePort\"></Port>\n</RegisterDescription>\n";
    return document;
}

void ParameterInfoBuilderXMLPrivate::processRegisterInfo(std::string& document, const RegisterInfo* node,
                                                         const RegisterInfo* parent) {
    for (; node != nullptr; node = node->next) {
        if (node->kind != FG_KIND_GROUP) {
            buildParamDescr(document, *node, parent);
            continue;
        }
        for (int i = 0; i < node->value.group.childCount; ++i) {
            processRegisterInfo(document, node->value.group.children[i], node);
        }
    }
}

void ParameterInfoBuilderXMLPrivate::buildParamDescr(std::string& document, const RegisterInfo& info,
                                                     const RegisterInfo* parent) {
    described_.push_back({&info, {}});
    if (info.publish == 0) return;
    if (parent != nullptr && textOf(parent->displayName) == marovine::kDirectRegisterAccessGroup) return;
    ParameterInfoGeneratorXML generator(document);
    if (!writeFeature(generator, info)) return;
    described_.back().places = generator.places();
    categoryOf(parent).addFeature(xmlNameFilter(textOf(info.name)));
    document += kAfterFeature;
}

/// Categories are not nested: a group within a group has its category directly below the root, and groups of
/// one name share theirs.
Category& ParameterInfoBuilderXMLPrivate::categoryOf(const RegisterInfo* parent) {
    if (parent == nullptr || textOf(parent->displayName).empty()) return root_;
    const std::string name = xmlNameFilter(parent->displayName);
    Category* const known = root_.getChild(name);
    return known != nullptr ? *known : root_.addChild(name);
}

void ParameterInfoBuilderXMLPrivate::writeCategory(std::string& document, const Category& category) const {
    const auto reference = [&document](std::string_view name) {
        ((document += "<pFeature>") += name) += "</pFeature>\n";
    };
    ((document += "<Category Name='") += category.getName()) += "' ";
    if (category.getName() == kRootName) document += "NameSpace='Standard'";
    document += " >\n";
    for (std::size_t i = 0; i < category.getChildCount(); ++i) reference(category.getChild(i)->getName());
    for (std::size_t i = 0; i < category.getFeatureCount(); ++i) reference(category.getFeature(i));
    document += "</Category>\n";
    for (std::size_t i = 0; i < category.getChildCount(); ++i) writeCategory(document, *category.getChild(i));
}

ParameterInfoBuilderXML::ParameterInfoBuilderXML(const Fg_ParameterInfo& registry, std::string modelName,
                                                 int port)
    : private_(std::make_unique<ParameterInfoBuilderXMLPrivate>(registry, std::move(modelName), port)) {}

ParameterInfoBuilderXML::~ParameterInfoBuilderXML() = default;

std::string ParameterInfoBuilderXML::build() {
    return private_->build();
}

const std::vector<ParameterInfoBuilderXML::Described>& ParameterInfoBuilderXML::described() const {
    return private_->described();
}
