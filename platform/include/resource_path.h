/**
 * Finds the pictures and other files that are installed with an application. Main-loop thread only.
 */
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The full path of a resource.
 *
 * @param application_id the application whose resources are meant
 * @param name           path below that application's resource folder
 * @return the path, to be released with freeResourcePath(), or null when the resource is not there
 */
char *getResourcePath(const char *application_id, const char *name);

/** Releases a path; null is allowed. */
void freeResourcePath(char *path);

#ifdef __cplusplus
}
#endif
