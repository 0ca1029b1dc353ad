// The front panel: asks serve once for what never changes, and then listens to what it tells.

import { Acting } from './acting.js';
import { Board } from './board.js';
import { Box } from './box.js';
import { Busses } from './busses.js';
import { Causes } from './causes.js';
import { Detail } from './detail.js';
import { addressOf, element, set, setText } from './elements.js';
import { Events } from './events.js';
import { get } from './get.js';
import { Live } from './live.js';
import { counted, inWords, timeInWords } from './words.js';

const at = id => document.getElementById( id );
const again = 2000;
const noticed = 8000; // so long a word about what was done stays

class Page {
   constructor( wiring, panel ) {
      this.board = new Board( wiring, panel );
      const acting = new Acting( at( 'token' ) );
      this.box = new Box( at( 'box' ), this.board, name => this.open( name ) );
      this.causes = new Causes( at( 'causes' ), this.board, ( address, place, bus ) => this.goTo( address, place, bus ),
         cause => this.acknowledge( acting, cause ) );
      this.events = new Events( at( 'happened' ), this.board );
      this.busses = new Busses( at( 'wires' ), this.board );
      this.detail = new Detail( at( 'object' ), this.board, acting );
      this.detail.changed = name => this.board.time && this.box.update( name );
      this.detail.closed = name => this.box.goTo( name );
      const short = this.board.name.split( '/' ).filter( part => part ).at( -1 ) ?? this.board.name;
      at( 'board' ).textContent = short;
      at( 'board' ).title = this.board.name;
      this.short = short;
      at( 'names' ).replaceChildren( ...this.board.names.map( name => element( 'option', { value: name } ) ) );
      at( 'find' ).addEventListener( 'submit', event => {
         event.preventDefault();
         if ( at( 'name' ).value.trim() )
            this.open( at( 'name' ).value.trim() );
      } );
      this.link = 'connecting';
      this.live = new Live( ( kind, message ) => this.told( kind, message ), ( link, why ) => this.linked( link, why ) );
      setInterval( () => this.tick(), 1000 );
   }

   open( name ) {
      location.hash = addressOf( 'object', name );
   }

   // From a cause: opens what it is about, and goes to where that is. Escape there comes back to all.
   goTo( address, place, bus ) {
      history.pushState( null, '', address );
      this.detail.fromAddress();
      if ( place )
         this.box.goTo( place );
      else
         this.busses.goTo( bus );
   }

   told( kind, message ) {
      if ( kind === 'all' && this.board.isOther( message ) )
         return location.reload();
      const isFirst = !this.board.time;
      this.board.take( kind, message );
      this.update();
      if ( isFirst )
         this.detail.fromAddress();
   }

   update() {
      const { board } = this;
      document.body.dataset.level = board.level;
      this.causes.update();
      this.box.update( this.detail.name );
      this.busses.update();
      this.events.update();
      this.detail.update();
      document.title = `${ board.causes.length ? `(${ board.causes.length }) ` : '' }${ this.short }`;
      this.tick();
   }

   linked( link, why ) {
      this.link = link;
      this.why = why;
      document.body.dataset.link = link;
      this.tick();
   }

   // The words of the status line, and how old all is.
   tick() {
      const { board } = this;
      if ( !board.time )
         return setText( at( 'status' ), this.link === 'lost' ? `No connection: ${ this.why }` : 'Connecting …' );
      const isLost = this.link === 'lost';
      const status = performance.now() < this.noticeUntil ? this.notice : isLost ? `Connection lost: ${ this.why }. What is shown is old.`
         : board.fault ? `The board isn't read: ${ board.fault }`
            : board.causes.length ? counted( board.causes.length, 'cause' ) : board.level === 'ok' ? 'Nothing is wrong' : 'Not all is known yet';
      setText( at( 'status' ), status );
      setText( at( 'age' ), isLost ? `from ${ timeInWords( board.time ) }, ${ inWords( board.silence() ) } ago` : timeInWords( board.time ) );
      set( at( 'status' ), { class: isLost || board.fault ? 'fault' : null } );
      if ( isLost )
         this.detail.update();
   }

   async acknowledge( acting, cause ) {
      try {
         await acting.post( '/v1/acknowledge', { cause } );
      } catch ( failure ) {
         this.notice = `Not acknowledged: ${ failure.message }`;
         this.noticeUntil = performance.now() + noticed;
         this.tick();
      }
   }
}

async function start() {
   try {
      const [ wiring, panel ] = await Promise.all( [ get( '/v1/wiring' ), get( '/v1/panel' ) ] );
      new Page( wiring, panel );
   } catch ( failure ) {
      document.body.dataset.link = 'lost';
      setText( at( 'status' ), `No connection: ${ failure.message }` );
      setTimeout( start, again );
   }
}

start();
