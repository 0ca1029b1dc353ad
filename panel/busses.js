// The buses as they branch: each with its segments behind the channels of multiplexers, and their chips.

import { addressOf, element, keep, linkTo } from './elements.js';
import { counted, shareInWords } from './words.js';

const media = { i2c: 'I2C adapter of the processor', scd: 'SMBus accelerators of the SCD' };
export const hexOf = address => `0x${ address.toString( 16 ).padStart( 2, '0' ) }`;
const chipsOf = ( segment, isFailing ) => segment.chips.filter( chip => segment.failing.some( one => one.address === chip.address ) === isFailing );

// All buses of the board with their segments and chips: from the wiring, and what the server counts.
export function busMap( board ) {
   const map = new Map();
   const segmentOf = ( bus, path ) => {
      if ( !map.has( bus ) )
         map.set( bus, new Map() );
      const segments = map.get( bus );
      if ( !segments.has( path ) )
         segments.set( path, new Map() );
      return segments.get( path );
   };
   for ( const object of board.wiring.values() )
      for ( const { bus, path, address } of object.chips ) {
         const chips = segmentOf( bus, path );
         chips.set( address, [ ...chips.get( address ) ?? [], object.name ] );
      }
   for ( const [ bus, { segments } ] of board.busses )
      for ( const { path, failing } of segments )
         for ( const { address } of failing )
            if ( !segmentOf( bus, path ).has( address ) )
               segmentOf( bus, path ).set( address, [] );
   return [ ...map ].map( ( [ name, segments ] ) => {
      const told = board.busses.get( name ) ?? { load: null, failures: 0, segments: [], clients: [] };
      return { name, ...told, segments: [ ...segments ].map( ( [ path, chips ] ) => {
         const of = told.segments.find( one => one.path === path ) ?? { load: 0, failures: 0, failing: [] };
         return { ...of, path, isHeld: ( told.held !== undefined && ( told.held === path || told.held === '' ) ) || isQuarantined( told, path ),
            chips: [ ...chips ].map( ( [ address, objects ] ) => ( { address, objects } ) ) };
      } ) };
   } );
}

const isQuarantined = ( bus, path ) => ( bus.quarantined ?? [] ).some( one => path === one || path.startsWith( `${ one } ` ) );
const heldOf = bus => bus.held ?? bus.quarantined?.[ 0 ];
const stateOf = bus => heldOf( bus ) === undefined ? '' : heldOf( bus ) === '' ? 'held' : `held behind ${ heldOf( bus ) }`;

// Whether a chip answers, as its objects show it.
function standingOf( board, segment, chip ) {
   if ( segment.failing.some( one => one.address === chip.address ) )
      return 'failing';
   const objects = chip.objects.map( name => board.objects.get( name ) ).filter( object => object );
   if ( objects.length && objects.every( object => object.absent || object.state === 'absent' ) )
      return 'absent';
   const isLost = object => object.state === 'unreadable' || object.state === 'stale';
   return objects.some( isLost ) && objects.every( object => isLost( object ) || !object.values.length ) ? 'failing' : 'ok';
}

export class Busses {
   constructor( section, board ) {
      this.board = board;
      this.list = section.querySelector( '#busses' );
      this.state = section.querySelector( '#busses-state' );
   }

   update() {
      this.state.textContent = this.board.bussesFault ? `How busy they are isn't known: ${ this.board.bussesFault }` : '';
      const items = busMap( this.board ).map( bus => ( { ...bus, clients: undefined,
         marks: this.board.causes.flatMap( ( cause, i ) => this.board.busOf( cause ) === bus.name ? [ [ i + 1, cause.level ] ] : [] ),
         segments: bus.segments.map( segment => ( { ...segment, load: undefined,
            chips: segment.chips.map( chip => [ chip.address, standingOf( this.board, segment, chip ) ] ) } ) ) } ) )
         .sort( ( one, other ) => ( heldOf( other ) !== undefined ) - ( heldOf( one ) !== undefined ) );
      keep( this.list, items, bus => bus.name, bus => this.item( bus ) );
   }

   goTo( name ) {
      const link = [ ...this.list.children ].find( item => item.dataset.bus === name )?.querySelector( 'a' );
      link?.scrollIntoView( { block: 'center' } );
      link?.focus( { preventScroll: true } );
   }

   item( bus ) {
      const [ medium ] = bus.name.split( /[(:]/ );
      const bar = element( 'span', { class: 'bar' }, element( 'span' ) );
      bar.firstChild.style.width = `${ Math.min( ( bus.load ?? 0 ) * 100, 100 ) }%`;
      return element( 'li', { 'data-bus': bus.name, 'data-held': heldOf( bus ), class: heldOf( bus ) === undefined ? '' : 'held' },
         element( 'p', {}, element( 'a', { class: 'bus', href: addressOf( 'bus', bus.name ), title: media[ medium ] }, bus.name ), ' ',
            bar, element( 'span', { class: 'load' }, bus.load === null ? '–' : shareInWords( bus.load ) ),
            element( 'span', { class: 'errors' }, bus.failures ? counted( bus.failures, 'error' ) : '' ),
            element( 'strong', { class: 'state' }, stateOf( bus ) ),
            ...bus.marks.map( ( [ number, level ] ) => element( 'span', { class: 'number', 'data-level': level }, String( number ) ) ) ),
         element( 'p', { class: 'segments' }, ...bus.segments.map( segment => this.segment( bus, segment ) ) ) );
   }

   // One box, with a mark for each chip.
   segment( bus, segment ) {
      const words = `${ segment.path || 'the bus itself' }: ${ counted( segment.chips.length, 'chip' ) }`
         + ( segment.isHeld ? ', held' : '' ) + ( segment.failing.length ? `, ${ segment.failing.map( one => hexOf( one.address ) ).join( ' and ' ) } fails` : '' );
      return element( 'span', { class: segment.isHeld ? 'segment held' : 'segment', role: 'img', 'data-path': segment.path, 'aria-label': words, title: words,
            'data-held': segment.isHeld, 'data-failing': segment.failing.length > 0 },
         ...segment.chips.map( ( [ , level ] ) => element( 'span', { class: `chip ${ level }` } ) ) );
   }
}

const isMultiplexer = ( bus, chip ) => bus.segments.some( ( { path } ) => path.split( ' ' ).some( one => one.startsWith( `${ hexOf( chip.address ) }=` ) ) );

// All of one bus.
export function busDetail( board, name ) {
   const bus = busMap( board ).find( one => one.name === name );
   if ( !bus )
      return [ element( 'p', {}, 'The board has no such bus.' ) ];
   const [ medium ] = name.split( /[(:]/ );
   return [
      element( 'p', {}, [ media[ medium ] ?? medium, bus.clock ? `${ bus.clock / 1000 } kHz` : '',
         bus.load === null ? '' : `${ shareInWords( bus.load ) } of its time is used`, bus.failures ? counted( bus.failures, 'error' ) : 'no errors' ]
         .filter( words => words ).join( ', ' ) ),
      heldOf( bus ) === undefined ? null : element( 'p', { class: 'fault' }, `A line is ${ stateOf( bus ) }.` ),
      element( 'table', { class: 'chips' }, element( 'thead', {}, element( 'tr', {}, ...[ 'Segment', 'Load', 'Chip', 'Objects' ].map( title => element( 'th', { scope: 'col' }, title ) ) ) ),
         element( 'tbody', {}, ...bus.segments.flatMap( segment => [ ...chipsOf( segment, true ), ...chipsOf( segment, false ) ].map( ( chip, i ) => {
            const fails = segment.failing.find( one => one.address === chip.address );
            const standing = standingOf( board, segment, chip );
            return element( 'tr', { 'data-path': segment.path, 'data-address': chip.address, class: segment.isHeld ? 'held' : '' },
               element( 'th', { scope: 'row' }, i ? '' : `${ segment.path || 'bus' }${ segment.isHeld ? ' held' : '' }` ),
               element( 'td', {}, i ? '' : shareInWords( segment.load ?? 0 ) ),
               element( 'td', {}, element( 'span', { class: `chip ${ standing }` } ), ` ${ hexOf( chip.address ) } `,
                  fails ? `${ fails.inARow } failed in a row (${ fails.last })` : standing === 'ok' ? '' : standing ),
               element( 'td', {}, isMultiplexer( bus, chip ) ? 'multiplexer' : '', ...chip.objects.flatMap( ( object, k ) => k ? [ ', ', linkTo( object ) ] : [ linkTo( object ) ] ) ) );
         } ) ) ) ),
      bus.clients?.length ? element( 'p', {}, `Used by ${ bus.clients.map( client => `${ client.program } (process ${ client.process }, ${ shareInWords( client.load ) })` ).join( ', ' ) }` ) : null,
   ].filter( part => part );
}
