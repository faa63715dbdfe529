// What the JVM running in this process says about itself: how many JNI global references
// it holds (from its own thread dump), and the process's resident memory.
#pragma once

#include <string>

namespace tarnix::hostsim {

// The JNI global references of the JVM in this process, or -1 when there is no JVM or
// it would not say. `runtimeLibrary` is the libjvm the component loaded.
long JniGlobalReferences(const std::string& runtimeLibrary);

// The JNI local references the calling thread holds (which must be attached), as JVMTI
// reports them: the roots of kind JNI_LOCAL that name this thread. -1 when the JVM will not
// say. The count includes the one reference the question itself holds.
long JniLocalReferencesOfThisThread(const std::string& runtimeLibrary);

// The process's resident set in kilobytes (0 when unknown).
long ResidentKilobytes();

}  // namespace tarnix::hostsim
