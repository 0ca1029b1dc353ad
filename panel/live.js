// The stream of /v1/live: everything first, and then each second what is new.

const silence = 5000;             // so long without a word is a lost connection: serve tells something each second
const pauses = [ 500, 1000, 2000 ]; // before it is tried again

export class Live {
   // `told( kind, message )` with "all" and "news"; `linked( "connecting" | "live" | "lost", why )`.
   constructor( told, linked ) {
      this.told = told;
      this.linked = linked;
      this.failures = 0;
      // Who doesn't look needs no stream. Browsers open only six to one server, in all their tabs.
      document.addEventListener( 'visibilitychange', () => document.hidden ? this.close() : this.open() );
      if ( !document.hidden )
         this.open();
   }

   open() {
      this.close();
      this.stream = new EventSource( '/v1/live' );
      for ( const kind of [ 'all', 'news' ] )
         this.stream.addEventListener( kind, event => this.heard( kind, event.data ) );
      this.stream.addEventListener( 'error', () => this.lost( 'orbis-host serve does not answer' ) );
      this.expect();
   }

   close() {
      clearTimeout( this.timer );
      this.stream?.close();
      this.stream = null;
   }

   heard( kind, text ) {
      this.failures = 0;
      this.expect();
      this.told( kind, JSON.parse( text ) );
      this.linked( 'live', '' );
   }

   expect() {
      clearTimeout( this.timer );
      this.timer = setTimeout( () => this.lost( 'orbis-host serve tells nothing' ), silence );
   }

   lost( why ) {
      this.close();
      this.linked( 'lost', why );
      this.timer = setTimeout( () => this.open(), pauses[ Math.min( this.failures++, pauses.length - 1 ) ] );
   }
}
