// The box as on a drawing: its sides, with what is in each place. The arrow keys go from place to place.

import { element, set, svg } from './elements.js';
import { shapeOf } from './shapes.js';
import { standingOf } from './words.js';

const titles = { front: 'Front', rear: 'Rear', inside: 'Inside, from above, the front below' };
// What isn't plain by itself, of the kinds that a side has.
const legends = {
   xcvr: 'dot: light arrives, dashed ring: none; dashed cage: empty; R reset, L low power, D disabled, ! alarm',
   slot: 'dashed ring: an LED that nobody has set yet',
   fan: 'numbers in rpm',
};
const legendOf = types => Object.keys( legends ).filter( type => types.has( type ) ).map( type => legends[ type ] ).join( '; ' );

export class Box {
   // `open( name )` shows an object.
   constructor( section, board, open ) {
      this.board = board;
      this.open = open;
      this.places = new Map(); // by the object's name
      section.replaceChildren( ...board.sides.map( side => this.side( side ) ) );
   }

   side( side ) {
      const badges = svg( 'g', { class: 'badges', 'aria-hidden': 'true' } );
      const drawing = svg( 'svg', { 'data-side': side.name, viewBox: `-1 -1 ${ side.width + 2 } ${ side.height + 2 }`,
         preserveAspectRatio: 'xMidYMin meet', role: 'group', 'aria-label': `${ titles[ side.name ] ?? side.name }: arrow keys go from place to place` },
         svg( 'rect', { class: 'outline', x: 0, y: 0, width: side.width, height: side.height, rx: 2 } ) );
      // What is within another place is drawn after it.
      const places = [ ...side.places ].sort( ( one, other ) => other.width * other.height - one.width * one.height );
      for ( const place of places ) {
         const type = this.board.wiring.get( place.object )?.type;
         const group = svg( 'g', { class: `place ${ type }`, 'data-object': place.object, role: 'button', tabindex: -1 },
            ...shapeOf( type ).draw( { ...place, within: side.width } ) );
         const entry = { ...place, side: side.name, within: side.width, shape: shapeOf( type ), group, badges };
         this.places.set( place.object, entry );
         group.addEventListener( 'click', () => this.open( place.object ) );
         group.addEventListener( 'keydown', event => this.key( event, entry ) );
         group.addEventListener( 'focus', () => this.reached( entry ) );
         drawing.append( group );
      }
      drawing.append( groupNames( side.places ), badges );
      drawing.querySelector( '.place' )?.setAttribute( 'tabindex', 0 );
      const types = new Set( side.places.map( place => this.board.wiring.get( place.object )?.type ) );
      return element( 'figure', { class: `side ${ side.name }` }, element( 'figcaption', {},
         element( 'strong', {}, titles[ side.name ] ?? side.name ), ' ', legendOf( types ) ), drawing );
   }

   // The Tab key reaches one place of each side: the last one where the keyboard was.
   reached( entry ) {
      for ( const other of this.places.values() )
         if ( other.side === entry.side )
            set( other.group, { tabindex: other === entry ? 0 : -1 } );
   }

   key( event, entry ) {
      const directions = { ArrowLeft: [ -1, 0 ], ArrowRight: [ 1, 0 ], ArrowUp: [ 0, -1 ], ArrowDown: [ 0, 1 ] };
      if ( event.key === 'Enter' || event.key === ' ' )
         this.open( entry.object );
      else if ( directions[ event.key ] )
         this.next( entry, ...directions[ event.key ] )?.group.focus();
      else
         return;
      event.preventDefault();
   }

   // The nearest place in a direction; what is aside counts as farther away.
   next( from, dx, dy ) {
      const middle = place => [ place.x + place.width / 2, place.y + place.height / 2 ];
      const [ x, y ] = middle( from );
      let best = null, least = Infinity;
      for ( const place of this.places.values() ) {
         if ( place.side !== from.side || place === from )
            continue;
         const [ toX, toY ] = middle( place );
         const along = ( toX - x ) * dx + ( toY - y ) * dy, aside = Math.abs( ( toX - x ) * dy ) + Math.abs( ( toY - y ) * dx );
         const far = along + 3 * aside;
         if ( along > 0.01 && far < least )
            [ best, least ] = [ place, far ];
      }
      return best;
   }

   update( selected ) {
      const { board } = this;
      const current = board.placeOf( selected );
      const badges = new Map();
      for ( const [ name, place ] of this.places ) {
         const object = board.objects.get( name );
         const words = place.shape.update( place.group, place, board );
         const marks = board.marksAt( name ), level = board.levelAt( name );
         const standing = object ? standingOf( object ) : 'not known yet';
         set( place.group, { 'data-level': level, 'data-state': object?.state, 'data-standing': standing,
            'data-marks': marks.join( ' ' ) || null, 'aria-current': name === current ? 'true' : null,
            'aria-label': `${ name }: ${ [ standing === 'ok' && level !== 'ok' ? level : standing, words,
               marks.length ? `cause ${ marks.join( ' and ' ) }` : '' ].filter( word => word ).join( ', ' ) }` } );
         if ( marks.length )
            badges.set( place.badges, [ ...badges.get( place.badges ) ?? [], this.badge( place, marks, board.causes[ marks[ 0 ] - 1 ] ) ] );
      }
      for ( const layer of new Set( [ ...this.places.values() ].map( place => place.badges ) ) ) {
         const shown = badges.get( layer ) ?? [];
         const before = [ ...layer.children ];
         if ( shown.length !== before.length || shown.some( ( one, i ) => !one.isEqualNode( before[ i ] ) ) )
            layer.replaceChildren( ...shown );
      }
   }

   // The numbers of the causes at the corner of a place: hollow where it only suffers from the first.
   badge( place, marks, cause ) {
      const isInside = place.side === 'inside', size = isInside ? 12 : 5.5;
      // Inside, the words are over and under a place; near the right edge, they are left of it.
      const aside = place.x + place.width > place.within - 60 ? -place.width - 50 : size + 24;
      const x = place.x + place.width + ( isInside ? aside : 0 ), y = isInside ? place.y + place.height / 2 : place.y + 0.5;
      const group = svg( 'g', { class: cause.object ? 'badge' : 'badge explained', 'data-level': cause.level, transform: `translate(${ Math.max( x, size ) } ${ Math.max( y, size ) })` },
         svg( 'circle', { r: size } ),
         svg( 'text', { 'text-anchor': 'middle', y: size * 0.42, 'font-size': size * ( marks.length > 1 ? 0.85 : 1.3 ) }, marks.join( ' ' ) ) );
      group.addEventListener( 'click', () => this.open( place.object ) );
      return group;
   }

   // To the place of an object, where it has one.
   goTo( name ) {
      const group = this.places.get( this.board.placeOf( name ) )?.group;
      group?.scrollIntoView( { block: 'center', inline: 'center' } );
      group?.focus( { preventScroll: true } );
   }
}

// Above the first of each group, what its members are called: "qsfp" over qsfp1 to qsfp32.
function groupNames( places ) {
   const kinOf = place => place.object.match( /^(.*\D)\d+$/ )?.[ 1 ];
   const isBeside = ( one, other, dx, dy ) => kinOf( one ) === kinOf( other ) && one !== other
      && Math.abs( other.x - one.x + dx * one.width ) < 0.5 * one.width && Math.abs( other.y - one.y + dy * one.height ) < 0.5 * one.height;
   const isGroup = place => places.filter( other => kinOf( other ) === kinOf( place ) ).length > 2;
   const first = places.filter( place => kinOf( place ) && isGroup( place )
      && !places.some( other => isBeside( place, other, 1, 0 ) || isBeside( place, other, 0, 1 ) ) );
   return svg( 'g', { class: 'groups', 'aria-hidden': 'true' }, ...first.map( place =>
      svg( 'text', { x: place.x, y: place.y - 1.5, 'font-size': 4.5 }, kinOf( place ) ) ) );
}
