// One object: its values with their limits and history, its module, why it is so, and what it can do.
// Or one bus. The address of the page says which: #object/NAME, #bus/NAME.

import { actionsOf } from './actions.js';
import { busDetail } from './busses.js';
import { historyOf, scale } from './chart.js';
import { element, keep, linkTo, replaceKeepingFocus, setText } from './elements.js';
import { get } from './get.js';
import { moduleDetail } from './module.js';
import { whyDetail } from './why.js';
import { inWords, markOf, spaced, standingOf, timeInWords, valueInWords } from './words.js';

const objectEvery = 2000, restEvery = 5000;
const ranges = [ [ '10m', '10 minutes', 600 ], [ '1h', '1 hour', 3600 ], [ '1d', '1 day', 86400 ] ];

// What a person has typed need not be right.
function decoded( text ) {
   try {
      return decodeURIComponent( text );
   } catch {
      return text;
   }
}

export class Detail {
   constructor( section, board, acting ) {
      Object.assign( this, { section, board, acting } );
      window.addEventListener( 'hashchange', () => this.fromAddress() );
      document.addEventListener( 'keydown', event => {
         if ( event.key === 'Escape' && this.name && !document.querySelector( 'dialog[open]' ) )
            this.close();
      } );
   }

   fromAddress() {
      const [ , kind, name ] = location.hash.match( /^#(object|bus)\/(.*)$/ ) ?? [];
      clearTimeout( this.soon );
      clearTimeout( this.later );
      this.kind = kind;
      this.name = name && decoded( name );
      this.value = null;
      this.section.hidden = !this.name;
      this.section.replaceChildren();
      document.body.dataset.detail = this.name ? kind : '';
      this.changed?.( this.name );
      if ( !this.name )
         return;
      this.frame();
      if ( kind === 'bus' )
         this.update();
      else if ( !this.board.wiring.has( this.name ) )
         this.parts.state.textContent = 'The board has no such object.';
      else {
         this.readObject();
         this.readRest();
      }
      this.heading.focus( { preventScroll: true } );
      this.section.scrollIntoView( { block: 'start' } );
   }

   close() {
      const name = this.name;
      history.pushState( null, '', location.pathname );
      this.fromAddress();
      this.closed?.( name );
   }

   frame() {
      this.heading = element( 'h2', { id: 'object-title', tabindex: -1 }, this.name );
      const close = element( 'button', { type: 'button', class: 'close', 'aria-label': `Close ${ this.name }` }, 'Close' );
      close.addEventListener( 'click', () => this.close() );
      this.parts = Object.fromEntries( [ 'state', 'causes', 'values', 'history', 'actions', 'module', 'why' ]
         .map( name => [ name, element( 'div', { class: name } ) ] ) );
      this.section.append( element( 'div', { class: 'head' }, this.heading, close ), ...Object.values( this.parts ) );
   }

   // Each second: what the stream tells.
   update() {
      if ( !this.name )
         return;
      if ( this.kind === 'bus' )
         return fill( this.parts.values, busDetail( this.board, this.name ) );
      const object = this.board.objects.get( this.name );
      if ( !object )
         return;
      const standing = standingOf( object ), age = this.board.ageOf( this.name );
      const read = Number.isFinite( age ) ? `, read ${ inWords( age ) } ago` : object.state === 'ok' ? '' : ', never read';
      setText( this.parts.state, `${ object.type }, ${ standing }${ read }${ object.fault ? `: ${ object.fault }` : '' }` );
      this.parts.state.dataset.level = object.level;
      const causes = this.board.causes.filter( cause => cause.cause === object.cause || cause.object === this.name || cause.explains.includes( this.name ) );
      keep( this.parts.causes, causes, cause => cause.cause, cause => element( 'p', { class: 'fault', 'data-level': cause.level }, `${ markOf( cause.level ) } ${ cause.cause }: ${ cause.words }` ) );
      for ( const row of this.parts.values.querySelectorAll( 'tr[data-value]' ) ) {
         const value = object.values.find( one => one.name === row.dataset.value );
         if ( value ) {
            setText( row.querySelector( '.value' ), valueInWords( value ) );
            if ( Number.isFinite( age ) )
               setText( row.querySelector( '.age' ), inWords( age ) );
         }
      }
   }

   async readObject() {
      const name = this.name;
      try {
         const object = await get( `/v1/objects/${ encodeURIComponent( name ) }` );
         if ( name !== this.name )
            return;
         this.object = object;
         this.showValues();
         if ( !this.parts.actions.hasChildNodes() )
            this.parts.actions.append( ...actionsOf( object, this.board.actions[ object.type ], this.board.control, this.acting, () => this.readObject() ) );
         if ( !this.value ) // the first time: readRest() goes on with it
            this.showHistory();
      } catch { /* the status line tells that serve doesn't answer */ }
      clearTimeout( this.soon );
      if ( name === this.name )
         this.soon = setTimeout( () => this.readObject(), objectEvery );
   }

   showValues() {
      const rows = this.object.values.map( value => element( 'tr', { 'data-value': value.name, 'data-level': value.level, 'data-state': value.state },
         element( 'th', { scope: 'row' }, spaced( value.name ) ),
         element( 'td', { class: 'value' }, valueInWords( value ) ),
         element( 'td', { class: 'state' }, value.state === 'ok' ? [ markOf( value.level ), value.level === 'indeterminate' ? '' : value.level ].join( ' ' ).trim() : value.state,
            value.crossed ? element( 'small', {}, ` ${ value.crossed }` ) : null, value.fault && value.fault !== this.object.fault ? element( 'small', {}, ` ${ value.fault }` ) : null, scale( value ) ),
         element( 'td', { class: 'age' }, inWords( value.age ) ),
         element( 'td', { class: 'since' }, value.since ? timeInWords( value.since ) : '' ) ) );
      fill( this.parts.values, rows.length ? [ element( 'table', {},
         element( 'thead', {}, element( 'tr', {}, ...[ 'Reading', 'Value', 'State', 'Age', 'Since' ].map( title => element( 'th', { scope: 'col' }, title ) ) ) ),
         element( 'tbody', {}, ...rows ) ) ] : [ element( 'p', {}, 'There is nothing to read of it.' ) ] );
      this.update();
   }

   // Module, history and what explains it: these change slower.
   async readRest() {
      const name = this.name, of = encodeURIComponent( name );
      const wiring = this.board.wiring.get( name );
      const module = this.board.moduleIn( name );
      const cage = module ? name : wiring.type === 'module' ? wiring.on[ 0 ] : null;
      const parts = [
         get( `/v1/objects/${ of }/why` ).then( why => [ this.parts.why, whyDetail( why ) ] ),
         cage ? get( `/v1/modules/${ encodeURIComponent( cage ) }` ).then( told => [ this.parts.module,
            [ ...moduleDetail( told ), module ? element( 'p', {}, 'Its limits and history: ', linkTo( module ) ) : null ] ] ) : null,
      ].filter( part => part );
      for ( const part of parts )
         part.then( ( [ node, children ] ) => name === this.name && node.isConnected && fill( node, children.filter( child => child ) ) ).catch( () => {} );
      await Promise.allSettled( [ ...parts, this.showHistory() ] );
      clearTimeout( this.later );
      if ( name === this.name )
         this.later = setTimeout( () => this.readRest(), restEvery );
   }

   // Of one value: the worst, until another one is chosen.
   async showHistory() {
      const numbers = ( this.object?.name === this.name ? this.object.values : [] ).filter( value => value.unit );
      if ( !numbers.length )
         return;
      if ( !this.value ) {
         const order = [ 'critical', 'warning' ];
         this.value = ( order.map( level => numbers.find( value => value.level === level ) ).find( value => value ) ?? numbers[ 0 ] ).name;
         this.range = this.range ?? ranges[ 0 ][ 0 ];
         this.parts.history.replaceChildren( element( 'h3', {}, 'History' ), element( 'p', {},
            this.choice( 'History of', numbers.map( value => [ value.name, spaced( value.name ) ] ), this.value, chosen => this.value = chosen ), ' ',
            this.choice( 'History for the last', ranges, this.range, chosen => this.range = chosen ) ), element( 'div', { class: 'chart' } ) );
      }
      const name = this.name, value = numbers.find( one => one.name === this.value ) ?? numbers[ 0 ];
      const range = this.range, seconds = ranges.find( ( [ one ] ) => one === range )[ 2 ];
      const of = encodeURIComponent( name );
      const told = await get( `/v1/history?object=${ of }&value=${ encodeURIComponent( value.name ) }&since=${ range }` ).catch( () => null );
      const { events } = await get( `/v1/events?object=${ of }&limit=100` ).catch( () => ( { events: [] } ) );
      if ( !told || name !== this.name || value.name !== this.value || range !== this.range )
         return;
      const now = Date.parse( this.board.time );
      const chart = told.values.length ? historyOf( value, told.values[ 0 ], events, now - seconds * 1000, now ) : null;
      this.parts.history.querySelector( '.chart' ).replaceChildren( chart ?? element( 'p', {}, 'Nothing is remembered of it.' ) );
   }

   choice( label, options, chosen, choose ) {
      const select = element( 'select', { 'aria-label': label }, ...options.map( ( [ value, words ] ) => element( 'option', { value, selected: value === chosen }, words ) ) );
      select.addEventListener( 'change', () => {
         choose( select.value );
         this.showHistory();
      } );
      return select;
   }
}

// Puts these in place of what is in a node, where that is something else; the keyboard stays where it is.
function fill( node, children ) {
   const made = element( 'div', {}, ...children );
   if ( node.firstElementChild?.isEqualNode( made ) )
      return;
   node.firstElementChild ? replaceKeepingFocus( node.firstElementChild, made ) : node.append( made );
}
