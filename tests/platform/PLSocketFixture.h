#pragma once

#include "PlatformLibrary/PLSocket.h"
#include "PrivateFolder.h"
#include "ScriptedServer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <string>

namespace PlatformTest {

class PLSocketFixture : public ::testing::Test {
 protected:
   PLSocketFixture() {
      setenv( "ORBIS_SMBUS_SOCKET", path.c_str(), 1 );
      request.add_request()->set_addr( 0x48ull << 32 );
   }
   ~PLSocketFixture() override {
      if ( client.fd >= 0 )
         close( client.fd );
   }
   static void limitIs( int milliseconds ) {
      setenv( "ORBIS_SMBUS_TIMEOUT_MS", std::to_string( milliseconds ).c_str(), 1 );
   }
   // The data of the only response; or the text of errno after a failure.
   std::string ask() {
      Smbus::TransactionResponse *response = nullptr;
      errno = 0;
      const int result = client.sendRequestWait( &request, &response );
      const int error = errno;
      const std::unique_ptr<Smbus::TransactionResponse> owned( response );
      if ( result < 0 ) {
         EXPECT_EQ( response, nullptr );
         EXPECT_EQ( client.fd, -1 );
         return strerrorname_np( error );
      }
      return owned->response_size() == 1 ? owned->response( 0 ).data() : "empty";
   }

   TestSupport::PrivateFolder folder;
   const std::string path = folder.file( "smbus.sock" );
   PlatformLibrary::PLSocket client;
   Smbus::TransactionRequest request;
};

} // namespace PlatformTest
