/**
 * A call to the running player over the session bus.
 */
#pragma once

#include <string>

#include "launch/launch_request.h"

namespace tvctl {

/** The bytes of a path or of an extra's value; told apart from text by type. */
struct Bytes {
    std::string value;
};

/** Calls an operation of the control interface. @return an ExitStatus; failures are explained. */
int call_control(const char *operation, const std::string &text);
int call_control(const char *operation, const Bytes &bytes);

/** As above; `result` receives the text that the player answers with. */
int ask_control(const char *operation, const std::string &text, std::string &result);

/** Hands the player a launch request with these extras. */
int call_launch(const platform::Extras &extras);

} // namespace tvctl
