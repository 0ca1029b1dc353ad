// Why an object is as it is: what it depends on, who else is there, and what was read last.

import { hexOf } from './busses.js';
import { element, linkTo } from './elements.js';
import { inWords } from './words.js';

const mostTransfers = 8;
const placeOf = ( { bus, path, address } ) => `${ hexOf( address ) } on ${ bus }${ path ? ` behind ${ path }` : '' }`;

// As /v1/objects/NAME/why gives it.
export function whyDetail( why ) {
   const line = ( one, words ) => element( 'li', { 'data-level': one.level }, linkTo( one.object ), ` ${ words }` );
   const chain = why.chain.map( one => line( one, one.words ) );
   const causes = why.causes.map( cause => element( 'li', { 'data-level': cause.level }, `${ cause.cause }: ${ cause.words }` ) );
   const neighbours = why.neighbours.map( one => element( 'li', {}, `${ placeOf( one ) } ${ one.answers === undefined ? '' : one.answers ? 'answers' : 'does not answer' } `,
      ...one.objects.flatMap( ( name, i ) => i ? [ ', ', linkTo( name ) ] : [ linkTo( name ) ] ) ) );
   const transfers = why.transfers.slice( -mostTransfers ).reverse().map( one => element( 'tr', {},
      element( 'td', {}, `${ inWords( one.age ) } ago` ), element( 'td', {}, one.operation ),
      element( 'td', { class: one.error ? 'fault' : '' }, element( 'code', {}, one.error ?? one.data ?? '' ) ) ) );
   const part = ( title, items, tag = 'ul' ) => items.length ? [ element( 'h4', {}, title ), element( tag, {}, ...items ) ] : [];
   return [ element( 'h3', {}, 'Why' ),
      ...part( 'From', chain ),
      ...part( 'Because of', causes ),
      element( 'p', {}, [ why.driver ? `driver ${ why.driver }` : '', why.chips.map( placeOf ).join( ', ' ) ].filter( words => words ).join( ', ' ) ),
      ...part( 'On the same bus', neighbours ),
      ...part( 'Read last', transfers, 'table' ),
      ...( why.left_alone ?? [] ).map( words => element( 'p', { class: 'fault' }, words ) ),
      why.why_no_transfers ? element( 'p', {}, `What was read last isn't known: ${ why.why_no_transfers }` ) : null,
   ].filter( one => one );
}
