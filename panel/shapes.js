// How each kind of object is drawn on the box. All measures are millimetres, as on a drawing.

import { set, setText, svg } from './elements.js';
import { dbmInWords, dbmOf, numberInWords, spaced, standingOf, valueInWords } from './words.js';

const text = ( x, y, size, attributes = {} ) => svg( 'text', { x, y, 'font-size': size, ...attributes } );
const frame = ( { x, y, width, height }, corner = 0.8 ) =>
   svg( 'rect', { class: 'frame', x, y, width, height, rx: corner } );
const on = value => value?.value === 1 || value?.value === true;

// The words of what a cage's lines and its module say.
const lines = [
   [ 'reset', 'data-reset', 'R', 'in reset' ],
   [ 'lp_mode', 'data-lowpower', 'L', 'low power' ],
   [ 'tx_disable', 'data-disabled', 'D', 'transmitter disabled' ],
];

// The least light that a cage's module receives, in dBm; undefined where that isn't known.
function lightIn( board, cage ) {
   if ( on( board.value( cage, 'rx_los' ) ) )
      return -Infinity;
   const module = board.objects.get( board.moduleIn( cage ) );
   const powers = ( module?.values ?? [] )
      .filter( value => value.name.startsWith( 'rx_power' ) && typeof value.value === 'number' );
   return powers.length ? Math.min( ...powers.map( value => dbmOf( value.value ) ) ) : undefined;
}

const cage = {
   draw( place ) {
      const { x, y, width, height, object } = place;
      return [
         frame( place ),
         text( x + 1.2, y + 4.6, 4.2, { class: 'label' }, object ),
         text( x + 1.2, y + height - 1.2, 3.4, { class: 'signs' } ),
         svg( 'circle', { class: 'light', cx: x + width - 2.6, cy: y + height - 2.8, r: 1.5 } ),
      ];
   },
   update( group, place, board ) {
      const present = on( board.value( place.object, 'presence' ) );
      const light = present ? lightIn( board, place.object ) : undefined;
      const isOn = present ? lines.filter( ( [ name ] ) => on( board.value( place.object, name ) ) ) : [];
      const alarm = present && ( on( board.value( place.object, 'interrupt' ) )
         || on( board.value( place.object, 'tx_fault' ) ) || [ 'critical', 'warning' ].includes( board.levelAt( place.object ) ) );
      for ( const [ name, attribute ] of lines )
         set( group, { [ attribute ]: present && on( board.value( place.object, name ) ) } );
      set( group, { 'data-present': String( present ), 'data-alarm': alarm,
         'data-light': light === undefined ? null : light < -40 ? 'none' : light.toFixed( 1 ) } );
      setText( group.querySelector( '.label' ), place.object.match( /\d+$/ )?.[ 0 ] ?? place.object );
      setText( group.querySelector( '.signs' ), isOn.map( ( [ , , sign ] ) => sign ).join( ' ' ) + ( alarm ? ' !' : '' ) );
      if ( !present )
         return board.objects.get( place.object )?.state === 'ok' ? 'empty' : '';
      return [ light === undefined ? '' : light < -40 ? 'no light' : `light ${ dbmInWords( light ) }`,
         ...isOn.map( ( [ , , , words ] ) => words ), alarm ? 'alarm' : '' ].filter( words => words ).join( ', ' );
   },
};

const lamp = {
   draw( { x, y, width, height } ) {
      return [ svg( 'circle', { class: 'frame lamp', cx: x + width / 2, cy: y + height / 2, r: Math.min( width, height ) / 2 } ) ];
   },
   update( group, place, board ) {
      const setting = board.value( place.object, 'setting' )?.value;
      set( group, { 'data-setting': setting ?? 'never set' } );
      return setting ?? 'never set';
   },
};

// Five blades round a hub.
const blade = radius => `M0 0 Q${ radius * 0.35 } ${ -radius * 0.75 } ${ radius * 0.05 } ${ -radius } `
   + `Q${ -radius * 0.45 } ${ -radius * 0.7 } 0 0`;
const turnsOfSlowMotion = 12000; // rpm that are one turn in a second: a real fan is a blur

const rotor = {
   draw( { x, y, width, height } ) {
      const radius = Math.min( width, height ) / 2 - 1;
      const blades = [ 0, 72, 144, 216, 288 ].map( angle =>
         svg( 'path', { d: blade( radius ), transform: `rotate(${ angle })` } ) );
      return [ svg( 'g', { transform: `translate(${ x + width / 2 } ${ y + height / 2 })` },
         svg( 'circle', { class: 'frame', r: radius + 0.6 } ),
         svg( 'g', { class: 'blades' }, ...blades ),
         svg( 'circle', { class: 'hub', r: radius * 0.62 } ),
         text( 0, 1.5, 4.6, { class: 'speed' } ) ) ];
   },
   update( group, place, board ) {
      const speed = board.value( place.object, 'speed' ), known = typeof speed?.value === 'number';
      const air = airOf( board, board.placeOf( ( board.wiring.get( place.object )?.on ?? [] )[ 0 ] ) ?? place.object, place.side );
      set( group, { 'data-rpm': known ? speed.value : null, 'data-direction': air } );
      const seconds = known && speed.value > 0 ? ( turnsOfSlowMotion / speed.value ).toFixed( 1 ) : 0;
      const blades = group.querySelector( '.blades' );
      set( blades, { class: seconds ? 'blades turning' : 'blades' } );
      if ( seconds )
         blades.style.animationDuration = `${ seconds }s`;
      setText( group.querySelector( '.speed' ), known ? numberInWords( speed.value ) : standingOf( board.objects.get( place.object ) ?? {} ) === 'absent' ? '' : '?' );
      return [ known ? valueInWords( speed ) : '', air ? `air goes ${ air } here` : '' ].filter( words => words ).join( ', ' );
   },
};

// Where the air of a module goes at this side of the box: "in", "out"; null where that isn't told.
function airOf( board, slot, side ) {
   const told = String( board.value( slot, 'presence' )?.value ?? '' );
   const forward = /frontToBack/i.test( told ), backward = /backToFront/i.test( told );
   if ( !forward && !backward )
      return null;
   return forward === ( side === 'rear' ) ? 'out' : 'in';
}

const slot = {
   draw( place ) {
      const { x, y, width, height } = place;
      return [ frame( place, 1.5 ), text( x + 3, y + 7.5, 4.8, { class: 'label' } ),
         text( x + width - 3, y + height * 0.45, 4.8, { class: 'power', 'text-anchor': 'end' } ),
         text( x + width - 3, y + height * 0.45 + 7, 4.8, { class: 'input', 'text-anchor': 'end' } ) ];
   },
   update( group, place, board ) {
      const object = board.objects.get( place.object );
      const air = airOf( board, place.object, place.side );
      const supply = board.members.get( place.object ).map( name => board.objects.get( name ) ).find( one => one?.type === 'psu' );
      const watts = supply?.values.find( value => value.name === 'output_power' );
      const volts = supply?.values.find( value => value.name === 'input_voltage' );
      const isAbsent = object && standingOf( object ) === 'absent';
      set( group, { 'data-present': String( !isAbsent ), 'data-direction': air } );
      setText( group.querySelector( '.label' ), `${ place.object.replace( /-slot$/, '' ) }${ isAbsent ? ' empty' : air ? ` · air ${ air }` : '' }` );
      setText( group.querySelector( '.power' ), !isAbsent && typeof watts?.value === 'number' ? `${ numberInWords( Math.round( watts.value ) ) } W` : '' );
      setText( group.querySelector( '.input' ), !isAbsent && typeof volts?.value === 'number' ? `in ${ numberInWords( Math.round( volts.value ) ) } V` : '' );
      return isAbsent ? 'empty' : [ air ? `air goes ${ air } here` : '', watts ? valueInWords( watts ) : '' ].filter( words => words ).join( ', ' );
   },
};

const thermometer = {
   draw( place ) {
      const { x, y, width, height } = place;
      // Near the edge, words go inwards.
      const [ middle, anchor ] = x < 60 ? [ 4, 'start' ] : x + width > place.within - 60 ? [ place.within - 4, 'end' ] : [ x + width / 2, 'middle' ];
      return [ svg( 'rect', { class: 'target', x: x - 14, y: y - 18, width: width + 28, height: height + 22 } ),
         frame( place, height / 2 ),
         text( middle, y - 3, 15, { class: 'degrees', 'text-anchor': anchor } ),
         text( middle, y + height + 13, 13, { class: 'label', 'text-anchor': anchor } ) ];
   },
   update( group, place, board ) {
      const value = board.value( place.object, 'temperature' );
      const words = value ? valueInWords( value ) : '';
      setText( group.querySelector( '.degrees' ), typeof value?.value === 'number' ? words
         : standingOf( board.objects.get( place.object ) ?? {} ) === 'absent' ? '–' : '?' );
      setText( group.querySelector( '.label' ), place.object );
      return words;
   },
};

// A kind that has no drawing of its own: its name in a frame.
const box = {
   draw( place ) {
      return [ frame( place ), text( place.x + 1, place.y + place.height / 2 + 1.5, 4, { class: 'label' } ) ];
   },
   update( group, place, board ) {
      setText( group.querySelector( '.label' ), place.object );
      return ( board.objects.get( place.object )?.values ?? [] )
         .map( value => `${ spaced( value.name ) } ${ valueInWords( value ) }` ).join( ', ' );
   },
};

const shapes = { xcvr: cage, led: lamp, fan: rotor, slot, temp_sensor: thermometer };
export const shapeOf = type => shapes[ type ] ?? box;
