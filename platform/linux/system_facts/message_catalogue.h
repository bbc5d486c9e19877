/**
 * The application's display texts in the system language. Works on machines on which no locale was
 * ever generated: only the catalogue has to be there. Main-loop thread only.
 */
#pragma once

namespace platform {

/** Binds the catalogue installed with the program and chooses the system language. */
void bind_message_catalogue();

/** Chooses the system language again, after it has changed. */
void choose_catalogue_language();

} // namespace platform
