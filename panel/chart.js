// A value between its limits, and what it was.

import { svg } from './elements.js';
import { numberInWords, timeOfDay } from './words.js';

const kinds = [ 'low_critical', 'low_warning', 'high_warning', 'high_critical' ];
const limitsOf = value => kinds.filter( kind => typeof value.limits?.[ kind ] === 'number' )
   .map( kind => ( { kind, level: kind.endsWith( 'critical' ) ? 'critical' : 'warning', at: value.limits[ kind ] } ) );

// From the lowest to the highest that has to be seen, with a little room.
function rangeOf( numbers ) {
   const low = Math.min( ...numbers ), high = Math.max( ...numbers );
   const room = ( high - low || Math.abs( high ) || 1 ) * 0.08;
   return { low: low - room, high: high + room };
}

// The limits as a scale, with the value on it.
export function scale( value ) {
   const limits = limitsOf( value );
   if ( typeof value.value !== 'number' || !limits.length )
      return null;
   const width = 240, { low, high } = rangeOf( [ value.value, ...limits.map( limit => limit.at ) ] );
   const x = number => ( number - low ) / ( high - low ) * width;
   const zone = ( level, from, to ) => svg( 'rect', { class: `zone ${ level }`, x: x( from ), y: 8, width: Math.max( x( to ) - x( from ), 0 ), height: 6 } );
   const of = kind => value.limits[ kind ];
   const lowest = of( 'low_warning' ) ?? of( 'low_critical' ) ?? low, highest = of( 'high_warning' ) ?? of( 'high_critical' ) ?? high;
   const zones = [ zone( 'ok', lowest, highest ) ];
   if ( of( 'low_warning' ) !== undefined )
      zones.push( zone( 'warning', of( 'low_critical' ) ?? low, of( 'low_warning' ) ) );
   if ( of( 'high_warning' ) !== undefined )
      zones.push( zone( 'warning', of( 'high_warning' ), of( 'high_critical' ) ?? high ) );
   if ( of( 'low_critical' ) !== undefined )
      zones.push( zone( 'critical', low, of( 'low_critical' ) ) );
   if ( of( 'high_critical' ) !== undefined )
      zones.push( zone( 'critical', of( 'high_critical' ), high ) );
   const words = limits.map( ( { kind, at } ) => `${ kind.replace( '_', ' ' ) } ${ numberInWords( at ) }` ).join( ', ' );
   // A number stands under its limit where there is room for it.
   let free = -Infinity;
   const numbers = limits.flatMap( ( { at } ) => {
      const label = numberInWords( at ), half = label.length * 3 + 2;
      const middle = Math.min( Math.max( x( at ), half ), width - half );
      if ( middle - half < free )
         return [];
      free = middle + half;
      return [ svg( 'text', { x: middle, y: 24, 'text-anchor': 'middle', 'font-size': 9 }, label ) ];
   } );
   return svg( 'svg', { class: 'scale', viewBox: `0 0 ${ width } 26`, role: 'img', 'aria-label': `limits: ${ words }` }, ...zones, ...numbers,
      svg( 'path', { class: 'needle', d: `M${ x( value.value ) } 15 l-4 -9 h8 z` } ) );
}

// Lines of [ from, to ] where something is known: a gap ends a line. `points`: [ time, low, high ].
function piecesOf( points, gap ) {
   const pieces = [];
   let last = -Infinity;
   for ( const point of points ) {
      if ( point[ 0 ] - last > gap || point[ 1 ] === null )
         pieces.push( [] );
      if ( point[ 1 ] !== null ) {
         pieces.at( -1 ).push( point );
         last = point[ 0 ];
      }
   }
   return pieces.filter( piece => piece.length );
}

// What a number was, with its limits drawn in and events marked. `recorded` is as /v1/history gives it,
// `events` those of its object.
export function historyOf( value, recorded, events, from, to ) {
   const points = ( recorded.readings?.map( ( [ time, number ] ) => [ Date.parse( time ), number, number ] )
      ?? recorded.minutes.map( ( [ time, low, high ] ) => [ Date.parse( time ), low, high ] ) )
      .filter( ( [ time ] ) => time >= from );
   const known = points.filter( point => point[ 1 ] !== null );
   if ( !known.length )
      return null;
   const width = 360, height = 90, left = 44, bottom = 14;
   const limits = limitsOf( value );
   const seen = known.flatMap( ( [ , low, high ] ) => [ low, high ] );
   const { low, high } = rangeOf( [ ...seen, ...limits.filter( limit => isNear( limit.at, Math.min( ...seen ), Math.max( ...seen ) )
      || isCrossed( value, limit ) ).map( limit => limit.at ) ] );
   const x = time => left + ( time - from ) / ( to - from ) * ( width - left );
   const y = number => ( high - number ) / ( high - low ) * ( height - bottom );
   const point = ( time, number ) => `${ x( time ).toFixed( 1 ) } ${ y( number ).toFixed( 1 ) }`;
   const times = known.map( ( [ time ] ) => time );
   const usual = times.slice( 1 ).map( ( time, i ) => time - times[ i ] ).sort( ( one, other ) => one - other );
   const lines = piecesOf( points, 3.5 * ( usual[ Math.floor( usual.length / 2 ) ] ?? 1000 ) ).map( piece => svg( 'path', { class: 'line',
      d: `M${ piece.map( ( [ time, , most ] ) => point( time, most ) ).join( 'L' ) }`
         + ( recorded.minutes ? `L${ [ ...piece ].reverse().map( ( [ time, least ] ) => point( time, least ) ).join( 'L' ) }Z` : 'h.1' ) } ) );
   const shownLimits = limits.filter( ( { at } ) => at > low && at < high );
   const happened = events.filter( event => Date.parse( event.time ) >= from );
   return svg( 'svg', { class: 'history', 'data-value': value.name, viewBox: `0 0 ${ width } ${ height }`, role: 'img',
      'aria-label': `${ value.name } from ${ timeOfDay( from ) } to ${ timeOfDay( to ) }: between ${ numberInWords( Math.min( ...seen ) ) } and ${ numberInWords( Math.max( ...seen ) ) } ${ value.unit ?? '' }; ${ happened.length } events` },
      ...shownLimits.map( ( { level, at } ) => svg( 'path', { class: `limit ${ level }`, d: `M${ left } ${ y( at ) }H${ width }` } ) ),
      ...happened.map( event => svg( 'path', { class: `event ${ event.what === 'set' ? event.level : 'ok' }`, d: `M${ x( Date.parse( event.time ) ) } 0V${ height - bottom }` },
         svg( 'title', {}, `${ timeOfDay( event.time ) } ${ event.what } ${ event.cause }` ) ) ),
      ...lines,
      svg( 'path', { class: 'axis', d: `M${ left } 0V${ height - bottom }H${ width }` } ),
      ...( y( Math.min( ...seen ) ) - y( Math.max( ...seen ) ) > 10 ? [ Math.max( ...seen ), Math.min( ...seen ) ] : [ seen.at( -1 ) ] ).map( number =>
         svg( 'text', { x: left - 3, y: Math.min( Math.max( y( number ) + 3, 8 ), height - bottom ), 'text-anchor': 'end', 'font-size': 9 }, numberInWords( number ) ) ),
      ...shownLimits.map( ( { at, level } ) => svg( 'text', { class: level, y: Math.max( y( at ) - 2, 7 ), 'font-size': 8,
         // A warning is often close to its critical limit: each has a side of its own.
         ...( level === 'warning' ? { x: left + 3 } : { x: width, 'text-anchor': 'end' } ) }, `${ level } ${ numberInWords( at ) }` ) ),
      svg( 'text', { x: left, y: height - 3, 'font-size': 9 }, timeOfDay( from ) ),
      svg( 'text', { x: width, y: height - 3, 'text-anchor': 'end', 'font-size': 9 }, timeOfDay( to ) ) );
}

// A limit that is far away would press what was read into one line.
const isNear = ( limit, low, high ) => {
   const room = Math.max( high - low, Math.abs( high ) * 0.5 );
   return limit >= low - room && limit <= high + room;
};
const isCrossed = ( value, limit ) => limit.kind.startsWith( 'low' ) ? value.value < limit.at : value.value > limit.at;
