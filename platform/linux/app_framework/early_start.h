/**
 * What has to be settled in a process before the toolkit starts. The application's own main starts
 * the toolkit first thing, so this runs before main.
 */
#pragma once

namespace platform {

/** Sets the toolkit up for a program that is alone on the screen, and holds ending signals back. */
void prepare_process();

/** Lets ending signals through, once the toolkit can turn them into an orderly end. */
void let_signals_through();

} // namespace platform
