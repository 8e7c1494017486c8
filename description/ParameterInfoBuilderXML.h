#pragma once

#include <memory>
#include <string>

#include "description/Fg_ParameterInfo.h"

class ParameterInfoBuilderXMLPrivate;

/// Builds the XML description of one port in the GenApi 1.0 schema: a feature with its register for every
/// published parameter, and a category for every group that holds one. Ranges are those of the moment of
/// `build`. Parameters of the field and 64-bit kinds are not described.
class ParameterInfoBuilderXML {
 public:
    /// `modelName` is the applet's type name; the registry must outlive the builder.
    ParameterInfoBuilderXML(const Fg_ParameterInfo& registry, std::string modelName, int port);
    virtual ~ParameterInfoBuilderXML();

    /// The whole document. It does not depend on the process locale, and a port without parameters has a
    /// document without features.
    std::string build();

 private:
    std::unique_ptr<ParameterInfoBuilderXMLPrivate> private_;
};
