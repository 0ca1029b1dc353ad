#include "host/serve/EventStream.h"

#include "host/journal/EventJson.h"
#include "host/serve/Events.h"

#include <fmt/format.h>
#include <utility>

namespace Host {
namespace {

constexpr size_t eventsAtATime = 100;

class EventStream : public Http::Stream {
 public:
   EventStream( Events &events, Journal::Query query )
      : events_( events ), query_( std::move( query ) ) {
      query_.limit = eventsAtATime;
   }

   void start( std::function<void()> news ) override {
      listener_ = std::make_shared<Events::Listener>( std::move( news ) );
      events_.tell( listener_ );
   }

   std::string next() override {
      std::string text;
      for ( const Health::Event &event : events_.events( query_ ) ) {
         text += fmt::format( "id: {}\nevent: {}\ndata: {}\n\n", event.id, nameOf( event.what ),
                              toJson( event ) );
         query_.after = event.id;
      }
      return text;
   }

 private:
   Events &events_;
   Journal::Query query_; // of what was not sent yet
   std::shared_ptr<Events::Listener> listener_{};
};

} // namespace

std::shared_ptr<Http::Stream> streamOf( Events &events, Journal::Query query ) {
   return std::make_shared<EventStream>( events, std::move( query ) );
}

} // namespace Host
