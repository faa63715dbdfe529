#include "manager/RemoteFailure.h"

#include <gtest/gtest.h>

namespace {

TEST(RemoteFailureText, NamesConnectionProblemsByTheirJavaClassesOnly) {
  EXPECT_TRUE(IsRemoteFailureText(
      WSTR("java.rmi.ConnectException: Connection refused to host: 127.0.0.1")));
  EXPECT_TRUE(IsRemoteFailureText(
      WSTR("javax.naming.CommunicationException [Root exception is ...]\r\n\tat "
           "com.sun.jndi.rmi.registry.rmiURLContext.lookup(rmiURLContext.java:61)")));
  EXPECT_TRUE(IsRemoteFailureText(
      WSTR("javax.net.ssl.SSLHandshakeException: java.security.cert.CertificateExpiredException")));
  // A marker anywhere counts, in a frame as well as in the first line.
  EXPECT_TRUE(IsRemoteFailureText(WSTR("x\r\n\tat java.rmi.Naming.lookup(Naming.java:101)")));

  EXPECT_FALSE(IsRemoteFailureText(WSTR("java.lang.NullPointerException")));
  EXPECT_FALSE(IsRemoteFailureText(WSTR("JAVA.RMI.CONNECTEXCEPTION")));
  EXPECT_FALSE(IsRemoteFailureText(WSTR("RMIURLCONTEXT")));
  EXPECT_FALSE(IsRemoteFailureText(WSTR("java.rmi")));  // the class name needs its dot
  EXPECT_FALSE(IsRemoteFailureText(WString()));
}

}  // namespace
