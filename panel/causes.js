// What is wrong, the worst first. Each has the number that it has on the box.

import { addressOf, element, keep, linkTo } from './elements.js';
import { markOf, timeInWords } from './words.js';

const mostNames = 6;

export class Causes {
   // `goTo( address, place, bus )` opens what the address names, and goes to the place on the box, or to the bus;
   // `acknowledge( cause )` tells serve.
   constructor( list, board, goTo, acknowledge ) {
      Object.assign( this, { list, board, goTo, acknowledge } );
      this.whole = new Set(); // those of which all names are wanted
   }

   update() {
      const items = this.board.causes.map( ( cause, i ) => ( { ...cause, number: i + 1,
         control: this.board.control, whole: this.whole.has( cause.cause ),
         place: this.board.placesOf( cause )[ 0 ], bus: this.board.busOf( cause ) } ) );
      keep( this.list, items, item => item.cause, item => this.item( item ) );
   }

   item( cause ) {
      return element( 'li', { 'data-cause': cause.cause, 'data-level': cause.level, 'data-number': cause.number,
            class: cause.acknowledged ? 'seen' : '' },
         element( 'span', { class: 'number', 'aria-hidden': 'true' }, String( cause.number ) ),
         element( 'div', {},
            element( 'p', { class: 'title' }, element( 'span', { class: 'level' }, `${ markOf( cause.level ) } ${ cause.level }` ), ' ', this.title( cause ) ),
            element( 'p', { class: 'words' }, cause.words ),
            this.explained( cause ),
            element( 'p', { class: 'since' }, `since ${ timeInWords( cause.since ) }`,
               cause.acknowledged ? ', acknowledged ' : cause.control ? ' ' : '',
               !cause.acknowledged && cause.control ? this.button( cause ) : null ) ) );
   }

   // The name of the cause, which leads to its bus or its object.
   title( cause ) {
      const object = cause.object ?? cause.place;
      const address = cause.bus ? addressOf( 'bus', cause.bus ) : object ? addressOf( 'object', object ) : null;
      const title = element( address ? 'a' : 'span', { class: 'place', href: address }, cause.cause );
      title.addEventListener( 'click', event => {
         if ( !address || event.ctrlKey || event.metaKey || event.shiftKey ) // wanted in another tab or window
            return;
         event.preventDefault();
         this.goTo( address, cause.bus ? null : cause.place, cause.bus );
      } );
      return title;
   }

   explained( cause ) {
      if ( !cause.explains.length )
         return null;
      const names = cause.whole || cause.explains.length <= mostNames ? cause.explains : cause.explains.slice( 0, mostNames - 1 );
      const line = element( 'p', { class: 'explains' }, 'explains ' );
      names.forEach( ( name, i ) => line.append( i ? ', ' : '', this.board.wiring.has( name ) ? linkTo( name ) : name ) );
      if ( names.length < cause.explains.length ) {
         const more = element( 'button', { type: 'button', class: 'more' }, `and ${ cause.explains.length - names.length } more` );
         more.addEventListener( 'click', () => {
            this.whole.add( cause.cause );
            this.update();
         } );
         line.append( ' ', more );
      }
      return line;
   }

   button( cause ) {
      const button = element( 'button', { type: 'button', class: 'acknowledge', 'aria-label': `Acknowledge ${ cause.cause }` }, 'Acknowledge' );
      button.addEventListener( 'click', () => this.acknowledge( cause.cause ) );
      return button;
   }
}
