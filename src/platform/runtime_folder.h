// The folder where the library keeps the small files that live only while programs run.
//
// Windows keeps named kernel objects, such as the semaphores of zn_semaphore.h, in a namespace of
// the user's session. Here they are lock files in a folder of the user's own: "zenutl" in the
// user's runtime folder ($XDG_RUNTIME_DIR, which the login manager makes private to the user and
// empties at log-out), or, where that variable is unset or names no private folder of this
// user (a service, a container, `su`), "/tmp/zenutl-<uid>". Either is created on first use with
// mode 0700, and refused if it turns out to be anything else than a folder of this user closed
// to others, so that no other user can reach or pre-plant the files in it.
#ifndef ZENUTL_PLATFORM_RUNTIME_FOLDER_H_
#define ZENUTL_PLATFORM_RUNTIME_FOLDER_H_

#include <string>

namespace zenutl {
namespace platform {

// Finds or makes the folder; false, with a one-line reason in `error`, when it can't.
bool LibraryRuntimeFolder(std::string* folder, std::string* error);

}  // namespace platform
}  // namespace zenutl

#endif  // ZENUTL_PLATFORM_RUNTIME_FOLDER_H_
