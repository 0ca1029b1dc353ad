// Each rule on a few invented files: what it finds and what it accepts.
#include "Rules.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace House {

TEST( IncludedNamesTest, FindsBothKindsOfQuotesAndImports ) {
   EXPECT_THAT(
      includedNames( "#pragma once\n"
                     "#include \"smbusd/Server.h\"\n"
                     "#include <pl.h>\n"
                     "  #  include \"a/b.h\" // why\n"
                     "import \"OrbisUtil/Smbus.proto\";\n"
                     "import public \"c.proto\";\n" ),
      ElementsAre( "smbusd/Server.h", "pl.h", "a/b.h", "OrbisUtil/Smbus.proto", "c.proto" ) );
}

TEST( IncludedNamesTest, LeavesCommentsAndOtherLinesAlone ) {
   EXPECT_THAT( includedNames( "// #include \"smbusd/Server.h\"\n"
                               "const char *text = \"#include <pl.h>\";\n"
                               "#define INCLUDE \"a.h\"\n"
                               "important( \"b.h\" );\n" ),
                IsEmpty() );
}

TEST( SourceTreeTest, FindsAHeaderBesideTheIncluderAndBelowThePlatform ) {
   const SourceTree tree(
      { { "host/a/A.cpp", "#include \"B.h\"\n#include <pl.h>\n#include <map>\n" },
        { "host/a/B.h", "" },
        { "platform/pl.h", "" } } );
   EXPECT_THAT( tree.files().at( "host/a/A.cpp" ).includes,
                ElementsAre( "host/a/B.h", "platform/pl.h" ) );
}

TEST( SourceTreeTest, TakesAGeneratedHeaderAsItsProto ) {
   const SourceTree tree(
      { { "host/A.cpp", "#include \"smbus/Control.pb.h\"\n" }, { "smbus/Control.proto", "" } } );
   EXPECT_THAT( tree.files().at( "host/A.cpp" ).includes, ElementsAre( "smbus/Control.proto" ) );
}

TEST( ForbiddenIncludesTest, NamesBothFilesAndWhatIsAllowed ) {
   const SourceTree tree( { { "host/A.cpp", "#include \"smbus/B.h\"\n#include \"smbus/C.h\"\n" },
                            { "smbus/B.h", "" },
                            { "smbus/C.h", "#include \"host/D.h\"\n" },
                            { "host/D.h", "#include \"boards/E.h\"\n" },
                            { "boards/E.h", "" } } );
   EXPECT_THAT(
      forbiddenIncludes( tree, { { "host", { "smbus/B.h", "boards/" } }, { "smbus", {} } } ),
      ElementsAre( "host/A.cpp includes smbus/C.h; host may include smbus/B.h, boards/",
                   "smbus/C.h includes host/D.h; smbus may include nothing" ) );
}

TEST( UnknownRoomsTest, FindsASourceOutsideOfTheRooms ) {
   const SourceTree tree( { { "host/A.cpp", "" },
                            { "tests/B.cpp", "" },
                            { "optics/C.h", "" },
                            { "docs/CMakeLists.txt", "" },
                            { "D.cpp", "" } } );
   EXPECT_THAT( unknownRooms( tree, { { "host", {} } }, { "tests" } ),
                ElementsAre( "D.cpp is in no room that a rule is written for",
                             "optics/C.h is in no room that a rule is written for" ) );
}

TEST( UpwardIncludesTest, FindsAHeaderThatIncludesAHigherFolder ) {
   const SourceTree tree( { { "host/A.h", "#include \"host/a/B.h\"\n" },
                            { "host/A.cpp", "#include \"host/a/B.h\"\n" },
                            { "host/a/B.h", "#include \"host/A.h\"\n#include \"pl.h\"\n" },
                            { "platform/pl.h", "" } } );
   EXPECT_THAT(
      upwardIncludes( tree, { { "host", { ".", "a" } } } ),
      ElementsAre( "host/A.h includes host/a/B.h; the folders of host, lowest first: ., a" ) );
}

TEST( UpwardIncludesTest, FindsAFolderWithoutAPlace ) {
   const SourceTree tree( { { "host/A.h", "" }, { "host/new/B.h", "" } } );
   EXPECT_THAT( upwardIncludes( tree, { { "host", { "." } } } ),
                ElementsAre( "host/new/B.h is in a folder without a place in the order" ) );
}

TEST( IncludeCirclesTest, NamesTheWayRound ) {
   const SourceTree tree( { { "a/A.h", "#include \"a/B.h\"\n" },
                            { "a/B.h", "#include \"a/C.h\"\n#include \"a/D.h\"\n" },
                            { "a/C.h", "#include \"a/D.h\"\n" },
                            { "a/D.h", "#include \"a/B.h\"\n" } } );
   EXPECT_THAT( includeCircles( tree ),
                ElementsAre( "a/B.h includes itself: a/B.h -> a/C.h -> a/D.h -> a/B.h" ) );
}

TEST( ForbiddenCrossingsTest, AppliesToTheSourcesOfTheRoomOnly ) {
   const std::string all = "#include \"p/P.h\"\n#include \"p/a/A.h\"\n#include \"p/b/B.h\"\n";
   const SourceTree tree( { { "p/P.h", "" },
                            { "p/a/A.h", "#include \"p/b/B.h\"\n" },
                            { "p/a/A.cpp", all },
                            { "p/b/B.h", "" },
                            { "p/b/B.cpp", all },
                            { "p/c/C.cpp", all },
                            { "q/Q.cpp", all } } );
   EXPECT_THAT( forbiddenCrossings( tree, { { "p/a", { "p/b/" } }, { "p/b", {} } } ),
                ElementsAre( "p/b/B.cpp includes p/a/A.h; sources of p/b may include nothing",
                             "p/c/C.cpp is in a folder without an allowance" ) );
}

TEST( LargeRoomsTest, CountsTheLinesOfTheRoomsOnly ) {
   const SourceTree tree( { { "a/A.cpp", "1\n2\n3\n" },
                            { "b/B.h", "1\n2\n" },
                            { "c/C.proto", "1\n" },
                            { "c/CMakeLists.txt", "1\n2\n3\n4\n" },
                            { "tests/D.cpp", "1\n2\n3\n4\n" } } );
   const std::vector<Allowance> rooms{ { "a", {} }, { "b", {} }, { "c", {} } };
   EXPECT_THAT( largeRooms( tree, rooms, 50 ), IsEmpty() );
   EXPECT_THAT( largeRooms( tree, rooms, 49 ),
                ElementsAre( "a has 3 of 6 lines; a room may have 49 %" ) );
}

TEST( ForgottenTestsTest, TakesEveryWayToAddAFolderAndATest ) {
   const SourceTree tree( { { "tests/CMakeLists.txt", "foreach( room a b )\n"
                                                      "   add_subdirectory( ${room} )\n"
                                                      "endforeach()\n"
                                                      "add_subdirectory( c )\n" },
                            { "tests/a/CMakeLists.txt", "orbis_add_test( x LIBRARIES y )\n" },
                            { "tests/a/ATest.cpp", "" },
                            { "tests/b/CMakeLists.txt", "orbis_add_test( x TESTS BTest.cpp )\n" },
                            { "tests/b/BTest.cpp", "" },
                            { "tests/c/CMakeLists.txt", "file( GLOB tests *Test.cpp )\n"
                                                        "add_subdirectory( d )\n" },
                            { "tests/c/CTest.cpp", "" },
                            { "tests/c/d/CMakeLists.txt", "orbis_add_test( y )\n" },
                            { "tests/c/d/DTest.cpp", "" } } );
   EXPECT_THAT( forgottenTests( tree ), IsEmpty() );
}

TEST( ForgottenTestsTest, FindsAFolderThatIsNotAdded ) {
   const SourceTree tree( { { "tests/CMakeLists.txt", "# add_subdirectory( a )\n" },
                            { "tests/a/CMakeLists.txt", "orbis_add_test( x )\n" },
                            { "tests/a/ATest.cpp", "" } } );
   EXPECT_THAT( forgottenTests( tree ),
                ElementsAre( "tests/a/ATest.cpp: no CMakeLists.txt above adds tests/a" ) );
}

TEST( ForgottenTestsTest, FindsATestThatItsFolderDoesNotBuild ) {
   const SourceTree tree(
      { { "tests/CMakeLists.txt", "add_subdirectory( a )\nadd_subdirectory( b )\n" },
        { "tests/a/CMakeLists.txt", "orbis_add_test( x TESTS ATest.cpp )\n" },
        { "tests/a/ATest.cpp", "" },
        { "tests/a/BTest.cpp", "" },
        { "tests/b/CTest.cpp", "" } } );
   EXPECT_THAT( forgottenTests( tree ),
                ElementsAre( "tests/a/BTest.cpp: tests/a/CMakeLists.txt does not build it",
                             "tests/b/CTest.cpp: tests/b/CMakeLists.txt does not build it" ) );
}

TEST( SourcesWithoutTest, FindsASourceThatReachesTheHeaderByNoPath ) {
   const SourceTree tree( { { "host/A.cpp", "#include \"host/B.h\"\n" },
                            { "host/B.h", "#include \"host/C.h\"\n" },
                            { "host/C.h", "" },
                            { "host/D.cpp", "#include \"host/C.h\"\n" },
                            { "host/E.cpp", "" },
                            { "smbus/F.cpp", "" } } );
   EXPECT_THAT( sourcesWithout( tree, "host", "host/C.h" ),
                ElementsAre( "host/E.cpp does not include host/C.h" ) );
}

} // namespace House
