#include "Images.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace OpticsTest {

namespace {

using namespace Optics;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

Module decodedAsItIs( const Bytes &file ) {
   const Standard standard = standardOf( imageOfFile( file, {} ) ).value();
   return decode( imageOfFile( file, standard ), standard );
}

TEST( FindingsTest, TellEachPartThatWasNotReadOnce ) {
   Bytes file = sfp();
   file.resize( 256 );
   EXPECT_THAT( decodedAsItIs( file ).findings,
                ElementsAre( "the bytes 0 to 95 of A2h were not read: this leaves out the "
                             "thresholds and the calibration",
                             "the bytes 96 to 117 of A2h were not read: this leaves out the "
                             "monitors, the states and the flags" ) );
   file = qsfp();
   file.resize( 256 );
   EXPECT_THAT(
      decodedAsItIs( file ).findings,
      ElementsAre(
         "the bytes 128 to 199 of page 03h were not read: this leaves out the thresholds" ) );
   file = qsfpDd();
   file.resize( 512 );
   EXPECT_THAT(
      decodedAsItIs( file ).findings,
      ElementsAre(
         "the bytes 130 to 138 of page 10h were not read: this leaves out the disabled outputs",
         "the bytes 128 to 213 of page 11h were not read: this leaves out the lanes' monitors, "
         "states and flags" ) );
}

TEST( FindingsTest, TellHowMuchOfAPartWasRead ) {
   Bytes file = sfp();
   file.resize( 256 + 100 );
   EXPECT_THAT( decodedAsItIs( file ).findings,
                ElementsAre( "only 4 of the bytes 96 to 117 of A2h were read: this leaves out some "
                             "of the monitors, the states and the flags" ) );
}

TEST( FindingsTest, TellWhichByteAloneWasNotRead ) {
   Image image = imageOfFile( qsfpDd(), {} );
   Image without;
   for ( const auto &[region, bytes] : image.regions() )
      for ( unsigned i = 0; i < bytes.size(); ++i )
         if ( region.upper || i != 41 )
            without.put( region, i + ( region.upper ? 128 : 0 ), std::array{ *bytes[i] } );
   EXPECT_THAT(
      decode( without, Standard::Cmis ).findings,
      ElementsAre(
         "byte 41 of the lower half was not read: this leaves out the cause of a fault" ) );
}

TEST( FindingsTest, TellAWrongChecksumAndLeaveTheIdentity ) {
   const struct {
      Bytes file;
      size_t changed;
      const char *words;
   } rows[] = {
      { sfp(), 40, "checksum CC_BASE" },
      { sfp(), 68, "checksum CC_EXT" },
      { sfp(), a2 + 10, "checksum CC_DMI" },
      { qsfp(), 168, "checksum CC_BASE" },
      { qsfp(), 196, "checksum CC_EXT" },
      { qsfpDd(), 148, "checksum page 00h" },
      { qsfpDd(), page01OfCmis + 254, "checksum page 01h" },
      { qsfpDd(), page02OfCmis + 254, "checksum page 02h" },
   };
   for ( const auto &row : rows ) {
      Bytes file = row.file;
      ++file[row.changed];
      const Module module = decodedAsItIs( file );
      EXPECT_THAT( module.findings, ElementsAre( HasSubstr( row.words ) ) );
      EXPECT_EQ( module.vendor, "ACME OPTICS" );
      EXPECT_FALSE( module.partNumber.empty() );
   }
}

TEST( FindingsTest, TellTheNumbersOfAWrongChecksumAndWhatItCovers ) {
   Bytes file = sfp();
   put( file, 63, { 0x12 } );
   const Checksum wrong = decodedAsItIs( file ).checksums.at( 0 );
   EXPECT_FALSE( wrong.isRight() );
   EXPECT_EQ( wrong.found, 0x12 );
   EXPECT_EQ( wrong.computed, 0x18 );
   EXPECT_THAT(
      decodedAsItIs( file ).findings,
      ElementsAre( "the checksum CC_BASE is 12h, and the bytes 0 to 62 add up to 18h: the type, "
                   "the vendor, the part number and the wavelength may be wrong" ) );
   EXPECT_TRUE( decodedAsItIs( sfp() ).checksums.at( 0 ).isRight() );
}

TEST( FindingsTest, LeaveTheFirmwareOutOfTheChecksumOfPage01 ) {
   Bytes file = qsfpDd();
   put( file, page01OfCmis + 128, { 1, 2 } );
   EXPECT_THAT( decodedAsItIs( file ).findings, IsEmpty() );
}

TEST( FindingsTest, TellAMemoryThatIsNotProgrammed ) {
   Bytes file = qsfp();
   put( file, page03OfQsfp + 128, Bytes( 128, 0xFF ) );
   EXPECT_THAT( decodedAsItIs( file ).findings,
                ElementsAre( "all bytes of page 03h (128 to 255) are FFh: they are not programmed, "
                             "or were not read from the module" ) );
}

TEST( FindingsTest, TellAnIdentifierOfAnotherStandard ) {
   EXPECT_THAT(
      decode( imageOfFile( qsfpDd(), {} ), Standard::Sff8636 ).findings,
      Contains(
         "byte 0 is 18h (QSFP-DD), which is no module of SFF-8636: what follows may be wrong" ) );
}

TEST( FindingsTest, TellTwoIdentifiersThatDiffer ) {
   Bytes file = qsfp();
   file[128] = 0x0D;
   EXPECT_THAT(
      decoded( file ).findings,
      ElementsAre(
         "byte 0 is 11h and byte 128 of page 00h, its copy, is 0Dh: one of them is wrong" ) );
}

TEST( TextTest, EscapesWhatIsNoPrintableAscii ) {
   Bytes file = sfp();
   put( file, 20, { 'A', 0xFF, '\n', 'B', 0x00, 'C' } );
   put( file, 26, Bytes( 10, 0 ) );
   EXPECT_EQ( decoded( file ).vendor, "A\\xff\\x0aB\\x00C" );
   put( file, 20, Bytes( 16, 0 ) );
   EXPECT_EQ( decoded( file ).vendor, "" );
   put( file, 20, Bytes( 16, ' ' ) );
   EXPECT_EQ( decoded( file ).vendor, "" );
}

TEST( TextTest, ReadsADateOnlyIfThereIsSuchADay ) {
   const struct {
      const char *code, *date, *lot;
   } rows[] = { { "240229X1", "2024-02-29", "X1" },
                { "230229X1", "", "" },
                { "991231", "2099-12-31", "" },
                { "241301", "", "" },
                { "240431", "", "" },
                { "240400", "", "" },
                { "24o401", "", "" },
                { "2404", "", "" },
                { "240001", "", "" } };
   for ( const auto &row : rows ) {
      Bytes file = sfp();
      putText( file, 84, 8, row.code );
      EXPECT_EQ( decoded( file ).dateCode, row.code );
      EXPECT_EQ( decoded( file ).date, row.date ) << row.code;
      EXPECT_EQ( decoded( file ).lot, row.lot ) << row.code;
   }
}

TEST( TextTest, HasNoOuiOfZeros ) {
   Bytes file = sfp();
   put( file, 37, { 0, 0, 0 } );
   EXPECT_EQ( decoded( file ).oui, "" );
}

TEST( DecodeTest, KnowsTheStandardByTheIdentifier ) {
   const auto standard = []( uint8_t identifier ) {
      Image image;
      image.put( { 0x50 }, 0, std::array{ identifier } );
      return standardOf( image );
   };
   for ( const unsigned identifier : { 0x02u, 0x03u } )
      EXPECT_EQ( standard( uint8_t( identifier ) ), Standard::Sff8472 );
   for ( const unsigned identifier : { 0x0Cu, 0x0Du, 0x11u } )
      EXPECT_EQ( standard( uint8_t( identifier ) ), Standard::Sff8636 );
   for ( const unsigned identifier : { 0x18u, 0x19u, 0x1Eu, 0x1Fu, 0x20u, 0x21u } )
      EXPECT_EQ( standard( uint8_t( identifier ) ), Standard::Cmis );
   for ( const unsigned identifier : { 0x00u, 0x0Bu, 0x06u, 0x12u, 0x80u, 0xFFu } )
      EXPECT_EQ( standard( uint8_t( identifier ) ), std::nullopt );
   EXPECT_EQ( standardOf( Image() ), std::nullopt );
}

TEST( DecodeTest, HasNoDbmForNoLight ) {
   EXPECT_EQ( dBm( 0 ), std::nullopt );
   EXPECT_EQ( dBm( 1.0 ), 0.0 );
   EXPECT_NEAR( dBm( 0.5 ).value(), -3.0103, 1e-4 );
   EXPECT_NEAR( dBm( 0.0001 ).value(), -40, 1e-9 );
}

TEST( ImageTest, RefusesBytesThatAreNotInTheHalf ) {
   Image image;
   const Bytes three{ 1, 2, 3 };
   EXPECT_THROW( image.put( { 0x50 }, 126, three ), std::out_of_range );
   EXPECT_THROW( image.put( { 0x50 }, 128, three ), std::out_of_range );
   EXPECT_THROW( image.put( { 0x50, true }, 127, three ), std::out_of_range );
   EXPECT_THROW( image.put( { 0x50, true }, 254, three ), std::out_of_range );
   EXPECT_THROW( image.put( { 0x50, true }, 0xFFFFFFFF, three ), std::out_of_range );
   EXPECT_THAT( image.regions(), IsEmpty() );
   image.put( { 0x50, true }, 253, three );
   EXPECT_EQ( image.byte( { 0x50, true }, 255 ), 3 );
   EXPECT_EQ( image.byte( { 0x50, true }, 252 ), std::nullopt );
   EXPECT_EQ( image.byte( { 0x50, true }, 127 ), std::nullopt );
   EXPECT_EQ( image.byte( { 0x50 }, 1 ), std::nullopt );
   EXPECT_TRUE( image.has( { { 0x50, true }, 253, 3 } ) );
   EXPECT_FALSE( image.has( { { 0x50, true }, 252, 3 } ) );
   EXPECT_FALSE( image.has( { { 0x50, true }, 254, 3 } ) );
}

} // namespace

} // namespace OpticsTest
