// An access method for driver tests. The test gives the expected batches, their transfers and the
// answers. A different, an unexpected or a missing batch fails the test.
#pragma once

#include "OrbisGeneric/Ham/Ham.h"

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// One transfer, expected or seen.
struct Transfer {
   std::string kind{}; // "read8", "write16", ...
   unsigned reg = 0;
   unsigned length = 0;
   Bytes data{};
   bool pec = false;
   Bytes answer{};
   pl_status status = PL_STATUS_OK;

   Transfer answers( Bytes bytes ) const;
   Transfer carries( Bytes bytes ) const;
   Transfer withPec() const;
   Transfer fails( int failure ) const; // its batch returns this status
   std::string inWords() const;
};

Transfer recvByte();
Transfer read8( unsigned reg );
Transfer read16( unsigned reg );
Transfer read( unsigned reg, unsigned length );
Transfer readBlock( unsigned reg );
Transfer sendByte( uint8_t byte );
Transfer write8( unsigned reg, uint8_t value );
Transfer write16( unsigned reg );
Transfer write( unsigned reg );
Transfer writeBlock( unsigned reg );
Transfer processCall( unsigned reg );

class ScriptedHam : public Ham::Ham {
 public:
   virtual ~ScriptedHam();

   void expectBatch( std::vector<Transfer> transfers );
   // Fails the test for every expected batch that is missing, and clears the expected batches.
   void verify();

   void prepare() override;
   pl_status execute() override;
   ResponseId addRecvByte() override;
   ResponseId addRead8( unsigned reg ) override;
   ResponseId addRead16( unsigned reg ) override;
   ResponseId addRead( unsigned reg, unsigned len ) override;
   ResponseId addReadBlock( unsigned reg ) override;
   ResponseId addSendByte( uint8_t value, bool pec ) override;
   ResponseId addWrite8( unsigned reg, uint8_t value, bool pec ) override;
   ResponseId addWrite16( unsigned reg, uint16_t value, bool pec ) override;
   ResponseId addWrite( unsigned reg, void const *data, unsigned len, bool pec ) override;
   ResponseId addWriteBlock( unsigned reg, void const *data, unsigned len, bool pec ) override;
   ResponseId addProcessCall( unsigned reg, uint16_t value ) override;
   uint8_t get8( ResponseId id ) override;
   uint16_t get16( ResponseId id ) override;
   std::string getBlock( ResponseId id, unsigned len ) override;

 private:
   ResponseId queue( Transfer transfer );
   Bytes fetch( ResponseId id, size_t size );

   std::deque<std::vector<Transfer>> expected_;
   std::vector<Transfer> batch_;  // queued since prepare
   std::vector<Transfer> script_; // of the last executed batch
   int executed_ = 0;
};
