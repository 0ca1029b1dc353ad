// What is wrong, the worst first. Each has the number that it has on the box.

import { element, keep, linkTo, set } from './elements.js';
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
      const place = cause.place ? linkTo( cause.object ?? cause.place, { class: 'place' } )
         : cause.object ? linkTo( cause.object, { class: 'place' } ) : null;
      const bus = cause.bus && element( 'a', { class: place ? '' : 'place', href: `#bus/${ encodeURIComponent( cause.bus ) }` }, cause.bus );
      // The name is the text of the link: that of the cause itself, and where to find it.
      if ( place )
         place.textContent = cause.cause;
      const title = place ?? bus ?? element( 'span', {}, cause.cause );
      if ( title.href )
         title.addEventListener( 'click', event => {
            event.preventDefault();
            this.goTo( title.getAttribute( 'href' ), cause.bus ? null : cause.place, cause.bus );
         } );
      if ( place && cause.bus )
         set( place, { href: bus.href, 'data-object': null } );
      else if ( !place && bus )
         bus.textContent = cause.cause;
      return element( 'li', { 'data-cause': cause.cause, 'data-level': cause.level, 'data-number': cause.number,
            class: cause.acknowledged ? 'seen' : '' },
         element( 'span', { class: 'number', 'aria-hidden': 'true' }, String( cause.number ) ),
         element( 'div', {},
            element( 'p', { class: 'title' }, element( 'span', { class: 'level' }, `${ markOf( cause.level ) } ${ cause.level }` ), ' ', title ),
            element( 'p', { class: 'words' }, cause.words ),
            this.explained( cause ),
            element( 'p', { class: 'since' }, `since ${ timeInWords( cause.since ) }`,
               cause.acknowledged ? ', acknowledged ' : cause.control ? ' ' : '',
               !cause.acknowledged && cause.control ? this.button( cause ) : null ) ) );
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
