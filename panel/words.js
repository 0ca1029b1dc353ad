// Numbers, times and states in words.

const marks = { critical: '!!', warning: '!', indeterminate: '?', ok: '' };
export const markOf = level => marks[ level ] ?? '?';

// Ages: "0.3 s", "12 s", "3 min 20 s", "2 h 5 min", "3 d 4 h".
export function inWords( seconds ) {
   if ( !Number.isFinite( seconds ) )
      return 'never';
   if ( seconds < 9.95 )
      return `${ Math.max( seconds, 0 ).toFixed( 1 ) } s`;
   const whole = Math.round( seconds );
   if ( whole < 60 )
      return `${ whole } s`;
   const [ large, small, names ] = whole < 3600 ? [ 60, 1, [ 'min', 's' ] ]
      : whole < 86400 ? [ 3600, 60, [ 'h', 'min' ] ] : [ 86400, 3600, [ 'd', 'h' ] ];
   const rest = Math.floor( whole % large / small );
   return `${ Math.floor( whole / large ) } ${ names[ 0 ] }${ rest ? ` ${ rest } ${ names[ 1 ] }` : '' }`;
}

const twoDigits = number => String( number ).padStart( 2, '0' );
export function timeOfDay( iso ) {
   const time = new Date( iso );
   return [ time.getHours(), time.getMinutes(), time.getSeconds() ].map( twoDigits ).join( ':' );
}
// With the day, where it isn't today.
export function timeInWords( iso ) {
   const time = new Date( iso );
   return time.toDateString() === new Date().toDateString() ? timeOfDay( iso )
      : `${ time.getFullYear() }-${ twoDigits( time.getMonth() + 1 ) }-${ twoDigits( time.getDate() ) } ${ timeOfDay( iso ) }`;
}

// "47.5", "11671", "0.7748": what was read, with not more digits than anyone needs.
export function numberInWords( number ) {
   const size = Math.abs( number );
   return String( Number( number.toFixed( size >= 1000 ? 0 : size >= 100 ? 1 : size >= 10 ? 2 : 4 ) ) );
}

// Optical power: none is written as the modules' standards do.
export function dbmOf( milliwatts ) {
   return milliwatts > 0 ? 10 * Math.log10( milliwatts ) : -Infinity;
}
export const dbmInWords = dbm => dbm < -40 ? '-40.0 dBm or less' : `${ dbm.toFixed( 1 ) } dBm`;

// A value with its unit: "47 °C", "yes", "beacon"; or why there is none.
export function valueInWords( value ) {
   if ( value.value === undefined || value.value === null )
      return value.state === 'ok' ? '—' : value.state;
   if ( typeof value.value === 'boolean' )
      return value.value ? 'yes' : 'no';
   if ( typeof value.value !== 'number' )
      return String( value.value );
   const number = `${ numberInWords( value.value ) }${ value.unit ? ` ${ value.unit }` : '' }`;
   return value.unit === 'mW' ? `${ number } (${ dbmInWords( dbmOf( value.value ) ) })` : number;
}

// "reload_cause" is "reload cause".
export const spaced = name => name.replaceAll( '_', ' ' );

export const counted = ( number, one, many = `${ one }s` ) => `${ number } ${ number === 1 ? one : many }`;

// The share of time: "3.1 %".
export const shareInWords = share => `${ ( share * 100 ).toFixed( 1 ) } %`;

// What an object stands for in few words: "ok", "critical", "unreadable", "absent".
export function standingOf( object ) {
   if ( object.absent || object.state === 'absent' )
      return 'absent';
   if ( object.level === 'critical' || object.level === 'warning' )
      return object.level;
   return object.state === 'ok' ? 'ok' : object.state;
}
