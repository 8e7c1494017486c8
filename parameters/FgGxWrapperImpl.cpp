#include "parameters/FgGxWrapperImpl.h"

#include "base/Logging.h"

using marovine::kTextRoom;

FgGxWrapperImpl::FgGxWrapperImpl()
    : FgGxWrapper(1),
      propertiesSection_("none"),
      // Not cleared: only the pages that a text really fills are ever touched.
      textBuffer_(std::make_unique_for_overwrite<char[]>(kTextRoom + 1)),
      design_(*this, designIds_) {
    properties_.setCaseSensitive(true);
    textBuffer_[kTextRoom] = '\0';
}

FgGxWrapperImpl::~FgGxWrapperImpl() = default;

tavr::tools::logging::Logger* FgGxWrapperImpl::getDefaultLogger() const {
    if (logger_ == nullptr) logger_ = tavr::tools::logging::Logging::getLogger("tavr.wrapper.Marovine");
    return logger_;
}

void FgGxWrapperImpl::copyText(const std::string& text, char* destination) {
    requireDestination(destination);
    destination[text.copy(destination, kTextRoom)] = '\0';
}

// ---- registry nodes of parameters ----

void FgGxWrapperImpl::setAccessFlags(int id, int flags) {
    if (RegisterInfo* node = findRegisterInfo(0, id)) marovine::storeField(node->accessFlags, flags);
}

int FgGxWrapperImpl::accessFlags(int id) const {
    const RegisterInfo* node = findRegisterInfo(0, id);
    return node != nullptr ? marovine::loadField(node->accessFlags) : 0;
}

void FgGxWrapperImpl::setMaximum(int id, std::uint32_t maximum) {
    if (RegisterInfo* node = findRegisterInfo(0, id))
        marovine::storeField(node->value.uint32.maximum, maximum);
}

void FgGxWrapperImpl::setMaximum(int id, double maximum) {
    if (RegisterInfo* node = findRegisterInfo(0, id)) marovine::storeField(node->value.real.maximum, maximum);
}
