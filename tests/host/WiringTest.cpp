#include "host/serve/Wiring.h"

#include "support/StateSchema.h"

#include <gtest/gtest.h>

namespace Host {
namespace {

TEST( WiringTest, TellsWhatEachObjectIsAndWhere ) {
   using BoardFiles::Kind;
   const BoardFiles::ChipPlace chip{ "scd(4):1:2", "0x70=1", 0x58 };
   BoardFiles::Board board{
      .objects = { { .kind = Kind::Fan, .name = "fan", .driver = "Pmbus", .chips = { chip } },
                   { .kind = Kind::Psu, .name = "psu", .did = 21, .driver = "Pmbus" },
                   { .kind = Kind::Slot, .name = "slot" } }
   };
   board.objects[0].health.in = "psu";
   board.objects[1].health.in = "slot";
   const std::string json = wiringJson( "/b", board );
   EXPECT_EQ( json,
              R"({"board":"/b","objects":[)"
              R"({"name":"fan","type":"fan","driver":"Pmbus","on":["psu","slot"],)"
              R"("chips":[{"bus":"scd(4):1:2","path":"0x70=1","address":88}]},)"
              R"({"name":"psu","type":"psu","driver":"Pmbus","did":21,"on":["slot"],"chips":[]},)"
              R"({"name":"slot","type":"slot","on":[],"chips":[]}],)"
              R"("actions":{"fan":["RPM"],"psu":[],"slot":[]}})" );
   EXPECT_EQ( schemaFault( json, "wiring" ), "" );
}

} // namespace
} // namespace Host
