// Seeing is free; doing needs the token of serve --http-control. It is asked for when it is needed first,
// stays in this page's memory, and is sent as a header: never in an address, never stored.

import { element } from './elements.js';

export class Acting {
   constructor( dialog ) {
      this.dialog = dialog;
      this.token = '';
   }

   // Posts to serve. Returns what it answers; throws an Error with the reason.
   async post( path, body ) {
      let token = this.token || await this.ask( '' );
      let answer = await this.send( path, body, token );
      while ( answer.status === 401 ) { // the token is a wrong one
         token = await this.ask( 'This is not the token of serve.' );
         answer = await this.send( path, body, token );
      }
      this.token = token;
      const json = await answer.json().catch( () => ( {} ) );
      if ( !answer.ok )
         throw new Error( json.fault || json.error || `${ json.state ?? '' } (HTTP ${ answer.status })` );
      return json;
   }

   send( path, body, token ) {
      return fetch( path, { method: 'POST', body: JSON.stringify( body ), headers: {
         'Content-Type': 'application/json', Authorization: `Bearer ${ token }` } } );
   }

   // Asks the person. Throws when there is none.
   ask( why ) {
      this.token = '';
      const input = element( 'input', { type: 'password', id: 'token-text', autocomplete: 'off', required: true } );
      const form = element( 'form', { method: 'dialog' },
         element( 'h2', { id: 'token-title' }, 'Token' ),
         why ? element( 'p', { class: 'fault', role: 'alert' }, why ) : null,
         element( 'p', {}, 'The first line of the file that serve was started with: --http-control FILE.' ),
         element( 'p', {}, element( 'label', { for: 'token-text' }, 'Token' ), ' ', input ),
         element( 'p', {}, element( 'button', { value: 'ok' }, 'Go on' ), ' ',
            element( 'button', { value: 'no', formnovalidate: true }, 'Cancel' ) ) );
      this.dialog.returnValue = '';
      this.dialog.replaceChildren( form );
      this.dialog.showModal();
      return new Promise( ( resolve, reject ) => this.dialog.addEventListener( 'close', () => {
         const token = input.value.trim();
         this.dialog.replaceChildren();
         this.dialog.returnValue === 'ok' && token ? resolve( token ) : reject( new Error( 'without the token nothing is done' ) );
      }, { once: true } ) );
   }
}
