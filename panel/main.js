// Shows how the board is, as serve tells it once a second.
const live = new EventSource( "/v1/live" );
const show = ( message ) => {
   const { level, fault } = JSON.parse( message.data );
   document.body.dataset.link = "live";
   document.body.dataset.level = level;
   document.getElementById( "status" ).textContent = fault || level;
};
live.addEventListener( "all", show );
live.addEventListener( "news", show );
live.addEventListener( "error", () => { document.body.dataset.link = "lost"; } );
