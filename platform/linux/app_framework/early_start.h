/**
 * What has to be settled in a process before the toolkit starts. The application's own main starts
 * the toolkit first thing, so this runs before main.
 */
#pragma once

namespace platform {

/**
 * Takes what a service manager says out of the environment, and waits where the starts before this
 * one ended soon. Sets the toolkit up for a program that is alone on the screen, holds ending
 * signals back, and begins to set GStreamer up. A variable that comes to the environment later
 * endangers its thread. Ends the process where the machine has too little for it to start.
 */
void prepare_process();

/** Lets ending signals through, once the toolkit can turn them into an orderly end. */
void let_signals_through();

} // namespace platform
