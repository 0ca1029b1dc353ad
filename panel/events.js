// What has happened, the newest first, as it comes.

import { addressOf, element, keep, linkTo } from './elements.js';
import { counted, timeInWords } from './words.js';

const mostShown = 200;
const verbs = { set: '', clear: 'good again: ', acknowledged: 'acknowledged: ' };

export class Events {
   constructor( section, board ) {
      this.board = board;
      this.list = section.querySelector( '#events' );
      this.filter = section.querySelector( '#filter' );
      this.state = section.querySelector( '#events-state' );
      this.filter.addEventListener( 'input', () => this.update() );
   }

   update() {
      const words = this.filter.value.toLowerCase().split( /\s+/ ).filter( word => word );
      const found = this.board.events.filter( event => {
         const text = `${ event.cause } ${ event.what } ${ event.level } ${ event.words } ${ ( event.explains ?? [] ).join( ' ' ) }`.toLowerCase();
         return words.every( word => text.includes( word ) );
      } );
      const shown = found.slice( -mostShown ).reverse();
      this.state.textContent = !this.board.events.length ? 'nothing has happened yet'
         : words.length ? `${ counted( found.length, 'event' ) } of ${ this.board.events.length }` : '';
      keep( this.list, shown, event => event.id, event => this.item( event ) );
   }

   item( event ) {
      const bus = this.board.busOf( event );
      const name = event.object && this.board.wiring.has( event.object ) ? linkTo( event.object, event.cause )
         : bus ? element( 'a', { href: addressOf( 'bus', bus ) }, event.cause ) : event.cause;
      return element( 'li', { 'data-event': event.id, 'data-level': event.level, 'data-what': event.what },
         element( 'time', { datetime: event.time }, timeInWords( event.time ) ), ' ',
         element( 'span', { class: 'level' }, event.level ), ' ',
         element( 'span', {}, verbs[ event.what ] ?? `${ event.what }: `, name ), ' ',
         element( 'span', { class: 'words' }, event.words ) );
   }
}
