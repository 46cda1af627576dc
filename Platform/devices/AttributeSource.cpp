#include "devices/AttributeSource.h"

#include "devices/DeviceCodes.h"
#include "devices/FileAttribute.h"
#include "devices/Links.h"
#include "devices/Number.h"

namespace Devices {

std::string AttributeSource::connect() {
    if (!m_device) {
        m_attribute = std::make_unique<FileAttribute>(m_name);
        return {};
    }
    if (m_link == nullptr) {
        Opened opened = openLink(*m_device);
        if (opened.link == nullptr) {
            return m_device->name + " cannot be reached at " + m_device->address + ": " + opened.why;
        }
        m_link = std::move(opened.link);
    }
    std::string problem;
    m_attribute = m_link->find(m_name, problem);
    return problem;
}

std::string AttributeSource::read(double& number) {
    if (m_attribute == nullptr) {
        if (std::string problem = connect(); m_attribute == nullptr) {
            m_link.reset(); // another connection may find what this one did not
            return problem;
        }
    }
    std::string text;
    const int error = m_attribute->read(text);
    if (m_link != nullptr && m_link->isBroken()) {
        m_attribute.reset();
        m_link.reset();
    }
    if (error != 0) {
        return m_name + ": " + meaningOf(codeOf(error));
    }
    const std::optional<double> got = numberIn(text);
    if (!got) {
        return m_name + " gives no number";
    }
    number = *got;
    return {};
}

} // namespace Devices
