/// Who the applet says it is, and the DMA operations that it does not offer.

#include <stdexcept>

#include "base/AppletIdentity.h"
#include "parameters/FgGxWrapperImpl.h"

const char* FgGxWrapperImpl::getManufacturer() {
    return marovine::identity::manufacturer;
}
const char* FgGxWrapperImpl::getCameraType() {
    return marovine::identity::name;
}
const char* FgGxWrapperImpl::getCameraVersion() {
    return marovine::identity::cameraVersion;
}
int FgGxWrapperImpl::getAppletID() {
    return 0;
}

int FgGxWrapperImpl::processChannelToDma(int /*process*/, int /*channel*/) {
    throw std::runtime_error("processChannelToDma() is not implemented.");
}
int FgGxWrapperImpl::mapDmaToFormat(int /*dmaIndex*/) {
    throw std::runtime_error("mapDmaToFormat() is not implemented.");
}
int FgGxWrapperImpl::setDmaAlignment(int /*dmaIndex*/, int /*alignment*/) {
    throw std::runtime_error("setDmaAlignment() is not implemented.");
}
int FgGxWrapperImpl::getDmaAlignment(int /*dmaIndex*/) {
    throw std::runtime_error("getDmaAlignment() is not implemented.");
}
