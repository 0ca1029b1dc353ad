// What can be done with an object, by its type: serve tells the words, which are those of a terminal.

import { element, setText } from './elements.js';

const cutsPower = words => [ 'powercycle', 'poweroff' ].includes( words );
const isWanted = word => word === word.toUpperCase() && word !== word.toLowerCase(); // RPM, COMMAND, BYTE...

// "reset off|on" is "reset off" and "reset on".
const expanded = usage => usage.split( ' ' ).reduce( ( lines, word ) =>
   lines.flatMap( line => word.split( '|' ).map( one => [ ...line, one ] ) ), [ [] ] );

export function actionsOf( object, usages, control, acting, done ) {
   if ( !usages?.length )
      return [];
   const title = element( 'h3', {}, 'Do' );
   if ( !control )
      return [ title, element( 'p', { class: 'readonly' }, 'This page only shows: serve runs without --http-control.' ) ];
   const lines = usages.flatMap( expanded );
   const select = element( 'select', { id: 'act-words' }, ...lines.map( ( line, i ) => element( 'option', { value: i }, line.join( ' ' ) ) ) );
   const input = element( 'input', { id: 'act-rest', autocomplete: 'off', spellcheck: 'false', required: true } );
   const rest = element( 'label', { for: 'act-rest' } );
   const result = element( 'p', { role: 'status', class: 'result' } );
   const isOnlyOne = lines.length === 1 && lines[ 0 ].every( isWanted );
   const form = element( 'form', { class: 'act' }, ...isOnlyOne ? [] : [ element( 'label', { for: 'act-words' }, 'Action' ), ' ', select ], ' ', rest, ' ', input, ' ',
      element( 'button', {}, 'Do it' ), result );
   const choose = () => {
      const wanted = lines[ select.value ].filter( isWanted ).join( ' ' );
      setText( rest, wanted );
      rest.hidden = input.hidden = input.disabled = !wanted;
   };
   select.addEventListener( 'change', choose );
   choose();
   form.addEventListener( 'submit', async event => {
      event.preventDefault();
      const words = [ ...lines[ select.value ].filter( word => !isWanted( word ) ), ...input.disabled ? [] : input.value.trim().split( /\s+/ ) ];
      const asked = words.join( ' ' );
      if ( cutsPower( asked ) && !window.confirm( `${ asked } of ${ document.getElementById( 'board' ).title }?` ) )
         return;
      setText( result, '…' );
      try {
         const answer = await acting.post( `/v1/objects/${ encodeURIComponent( object.name ) }/action`, { words } );
         setText( result, answer.value === undefined ? `done: ${ asked }` : `${ asked }: ${ answer.value }` );
         result.className = 'result';
         done();
      } catch ( failure ) {
         setText( result, `not done: ${ failure.message }` );
         result.className = 'result fault';
      }
   } );
   return [ title, form ];
}
