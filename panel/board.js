// What the page knows of the board, and what follows from it.

const levels = [ 'ok', 'indeterminate', 'warning', 'critical' ];
const worst = ( one, other ) => levels.indexOf( other ) > levels.indexOf( one ) ? other : one;

export class Board {
   constructor( wiring, panel ) {
      this.name = wiring.board;
      this.actions = wiring.actions ?? {};
      this.wiring = new Map( wiring.objects.map( object => [ object.name, object ] ) );
      this.names = wiring.objects.map( object => object.name );
      this.sides = panel.sides;
      this.drawn = new Set( panel.sides.flatMap( side => side.places.map( place => place.object ) ) );
      // Who is seen at a place: its object, and all that is on it and has no place of its own.
      this.members = new Map( [ ...this.drawn ].map( name => [ name, [ name ] ] ) );
      for ( const object of wiring.objects )
         if ( !this.drawn.has( object.name ) )
            this.members.get( this.placeOf( object.name ) )?.push( object.name );
      this.objects = new Map();
      this.ages = [];
      this.causes = [];
      this.busses = new Map();
      this.events = [];
   }

   // Whether a message that tells all is of another board, or of this one with other files.
   isOther( message ) {
      return message.board !== this.name || message.objects.map( object => object.name ).join() !== this.names.join();
   }

   // Takes a message of the stream.
   take( kind, message ) {
      this.received = performance.now();
      this.time = message.time;
      this.fault = message.fault;
      this.level = message.level;
      this.ages = message.ages;
      if ( kind === 'all' ) {
         this.control = message.control;
         this.objects.clear();
         this.busses.clear();
         this.events = [];
      }
      for ( const object of message.objects ?? [] )
         this.objects.set( object.name, object );
      for ( const bus of message.busses ?? [] )
         this.busses.set( bus.bus, bus );
      this.bussesFault = message.bussesFault ?? this.bussesFault;
      this.events = [ ...this.events, ...message.events ?? [] ].slice( -mostEvents );
      this.causes = message.causes ?? this.causes;
   }

   // Where an object is on the box: its own place, or that of what it is in.
   placeOf( name ) {
      return [ name, ...this.wiring.get( name )?.on ?? [] ].find( one => this.drawn.has( one ) );
   }

   // The name of the module's object of a cage; undefined for anything else.
   moduleIn( cage ) {
      return this.members.get( cage )?.find( name => this.wiring.get( name ).type === 'module' );
   }

   // The places of a cause: of its object, else of those that it explains.
   placesOf( cause ) {
      const own = cause.object && this.placeOf( cause.object );
      if ( own )
         return [ own ];
      return [ ...new Set( cause.explains.map( name => this.placeOf( name ) ).filter( place => place ) ) ];
   }

   // The bus that a cause names, where it is a bus, a multiplexer or a chip.
   busOf( cause ) {
      return cause.object ? undefined
         : [ ...this.busses.keys() ].find( bus => cause.cause.split( ' ' ).includes( bus ) );
   }

   // The numbers of the causes that are seen at a place: 1 is the first.
   marksAt( place ) {
      return this.causes.flatMap( ( cause, i ) => this.placesOf( cause ).includes( place ) ? [ i + 1 ] : [] );
   }

   // The worst of all that is seen at a place.
   levelAt( place ) {
      return this.members.get( place ).map( name => this.objects.get( name ) )
         .filter( object => object && !object.absent )
         .reduce( ( level, object ) => worst( level, object.level ), 'ok' );
   }

   value( name, value ) {
      return this.objects.get( name )?.values.find( one => one.name === value );
   }

   // Seconds since the object was read, now.
   ageOf( name ) {
      const age = this.ages[ this.names.indexOf( name ) ];
      return age === null || age === undefined ? NaN : age + this.silence();
   }
   // Seconds since serve told anything.
   silence() {
      return ( performance.now() - this.received ) / 1000;
   }
}

const mostEvents = 500;
