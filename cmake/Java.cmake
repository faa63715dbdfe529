# The component compiles against jni.h only; it never links the Java runtime, which it
# loads at run time. javac builds the stand-in jars and the test message server.
if(NOT JAVA_HOME)
  set(JAVA_HOME "$ENV{JAVA_HOME}")
endif()
if(NOT JAVA_HOME)
  set(JAVA_HOME /usr/lib/jvm/java-17-openjdk-amd64)
endif()
set(JAVA_HOME "${JAVA_HOME}" CACHE PATH "JDK used for jni.h, javac and the test JVM")
if(NOT EXISTS "${JAVA_HOME}/include/jni.h")
  message(FATAL_ERROR "No jni.h under JAVA_HOME=${JAVA_HOME}")
endif()

add_library(tarnix_jni_headers INTERFACE)
# The Linux jni_md.h is also right for mingw-w64: 32-bit jint, 64-bit jlong.
target_include_directories(tarnix_jni_headers INTERFACE
  "${JAVA_HOME}/include" "${JAVA_HOME}/include/linux")

set(Java_JAVAC_EXECUTABLE "${JAVA_HOME}/bin/javac")
set(Java_JAVA_EXECUTABLE "${JAVA_HOME}/bin/java")
set(Java_JAR_EXECUTABLE "${JAVA_HOME}/bin/jar")
find_package(Java 17 REQUIRED COMPONENTS Development Runtime)
include(UseJava)
