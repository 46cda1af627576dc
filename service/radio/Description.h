#ifndef SERVICE_RADIO_DESCRIPTION_H
#define SERVICE_RADIO_DESCRIPTION_H

#include <string_view>

namespace Radio::Service {

/** The interface described in the form of OpenAPI: the content of openapi.json. */
std::string_view interfaceDescription();

/** The page from which a person drives the radio: the content of page.html. */
std::string_view page();

} // namespace Radio::Service

#endif
