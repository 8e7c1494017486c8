#pragma once

#include <memory>
#include <string>
#include <vector>

#include "description/Fg_ParameterInfo.h"
#include "description/ParameterInfoGeneratorXML.h"

class ParameterInfoBuilderXMLPrivate;

/// Builds the XML description of one port in the GenApi 1.0 schema: a feature with its register for every
/// published parameter, and a category for every group that holds one. Ranges are those of the moment of
/// `build`. Parameters of the field and 64-bit kinds are not described.
class ParameterInfoBuilderXML {
 public:
    /// `modelName` is the applet's type name; the registry must outlive the builder.
    ParameterInfoBuilderXML(const Fg_ParameterInfo& registry, std::string modelName, int port);
    virtual ~ParameterInfoBuilderXML();

    /// A parameter and where the document says what can change of it; no places for what is not described.
    struct Described {
        const RegisterInfo* node;
        ParameterInfoGeneratorXML::Places places;
    };

    /// The whole document. It does not depend on the process locale, and a port without parameters has a
    /// document without features.
    std::string build();
    /// The parameters of the last `build`, in the registry's order.
    const std::vector<Described>& described() const;

 private:
    std::unique_ptr<ParameterInfoBuilderXMLPrivate> private_;
};
