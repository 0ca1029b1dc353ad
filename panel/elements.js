// Makes what the page shows. Text is only ever set as text, so that nothing from the board, a module's
// vendor name for example, can become a part of the page.

const svgNames = 'http://www.w3.org/2000/svg';

// Attributes: `class`, `title`, ...; one that is null, undefined or false is taken away, and true is "".
export function set( node, attributes ) {
   for ( const [ name, value ] of Object.entries( attributes ) )
      if ( value === null || value === undefined || value === false )
         node.removeAttribute( name );
      else if ( node.getAttribute( name ) !== String( value === true ? '' : value ) )
         node.setAttribute( name, value === true ? '' : value );
   return node;
}

export function element( tag, attributes = {}, ...children ) {
   const node = set( document.createElement( tag ), attributes );
   node.append( ...children.filter( child => child !== null && child !== undefined && child !== '' ) );
   return node;
}

export function svg( tag, attributes = {}, ...children ) {
   const node = set( document.createElementNS( svgNames, tag ), attributes );
   node.append( ...children.filter( child => child !== null && child !== undefined ) );
   return node;
}

// Changes a node's text, if it is another one: so a screen reader doesn't tell it again.
export function setText( node, text ) {
   if ( node.textContent !== text )
      node.textContent = text;
   return node;
}

// Keeps the children of a list: one for each item, in their order. A child is made anew only when its
// item has changed.
export function keep( parent, items, keyOf, make ) {
   const before = new Map( [ ...parent.children ].map( child => [ child.itsKey, child ] ) );
   let next = parent.firstElementChild;
   for ( const item of items ) {
      const key = keyOf( item ), shows = JSON.stringify( item );
      let child = before.get( key );
      before.delete( key );
      if ( !child || child.itShows !== shows ) {
         const made = make( item );
         made.itsKey = key;
         made.itShows = shows;
         if ( child ) {
            replaceKeepingFocus( child, made );
            if ( next === child )
               next = made;
         }
         child = made;
      }
      if ( child === next )
         next = next.nextElementSibling;
      else
         parent.insertBefore( child, next );
   }
   for ( const gone of before.values() )
      gone.remove();
}

// The keyboard stays where it was: on the same control of what comes in its place.
export function replaceKeepingFocus( old, made ) {
   const controls = 'a, button, input, select, [tabindex]';
   const where = old.contains( document.activeElement )
      ? [ ...old.querySelectorAll( controls ) ].indexOf( document.activeElement ) : -1;
   old.replaceWith( made );
   if ( where >= 0 )
      [ ...made.querySelectorAll( controls ) ][ where ]?.focus( { preventScroll: true } );
}

// The part of the page's address that opens an object or a bus.
export const addressOf = ( kind, name ) => `#${ kind }/${ encodeURIComponent( name ) }`;
export const linkTo = ( name, text = name ) => element( 'a', { href: addressOf( 'object', name ), 'data-object': name }, text );
