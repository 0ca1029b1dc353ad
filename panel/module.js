// A pluggable module, decoded.

import { element } from './elements.js';
import { dbmInWords, inWords, markOf, numberInWords, spaced } from './words.js';

const nameOf = code => code && ( code.name || `code ${ code.code }` );
const quantities = [ 'tx bias', 'tx power', 'rx power' ];
const levels = { high_alarm: 'critical', low_alarm: 'critical', high_warning: 'warning', low_warning: 'warning' };

// The flags that a monitor raises: [ [ "high alarm", "critical" ], ... ].
const raised = monitor => Object.entries( monitor.flags ?? {} ).filter( ( [ , isOn ] ) => isOn )
   .map( ( [ name ] ) => [ spaced( name ), levels[ name ] ] );

const valueOf = monitor => monitor.unit === 'mW'
   ? dbmInWords( monitor.dbm ?? -Infinity ) : `${ numberInWords( monitor.value ) } ${ monitor.unit }`;

// Each lane of what is measured for lanes; "1 to 8".
function lanesTable( module ) {
   const numbers = [ ...new Set( module.monitors.filter( one => one.lane ).map( one => one.lane ) ) ];
   if ( !numbers.length )
      return null;
   const cell = monitor => monitor ? element( 'td', {}, valueOf( monitor ), ...raised( monitor ).map( ( [ words, level ] ) =>
      element( 'span', { class: `flag ${ level }` }, ` ${ markOf( level ) } ${ words }` ) ) ) : element( 'td', {}, '–' );
   const flagsOf = lane => Object.entries( module.lanes.find( one => one.number === lane ) ?? {} )
      .filter( ( [ , isOn ] ) => isOn === true ).map( ( [ name ] ) => spaced( name ) ).join( ', ' );
   return element( 'table', { class: 'lanes' },
      element( 'thead', {}, element( 'tr', {}, ...[ 'Lane', ...quantities, 'Flags' ].map( title => element( 'th', { scope: 'col' }, title ) ) ) ),
      element( 'tbody', {}, ...numbers.map( lane => element( 'tr', { 'data-lane': lane }, element( 'th', { scope: 'row' }, String( lane ) ),
         ...quantities.map( quantity => cell( module.monitors.find( one => one.lane === lane && one.quantity === quantity ) ) ),
         element( 'td', { class: 'flag' }, flagsOf( lane ) ) ) ) ) );
}

// As /v1/modules/CAGE gives it.
export function moduleDetail( told ) {
   const title = element( 'h3', {}, 'Module' );
   const { module } = told;
   if ( !module )
      return [ title, element( 'p', {}, [ told.state, told.fault ].filter( words => words ).join( ': ' ) ) ];
   const bad = module.checksums.filter( sum => sum.found !== sum.computed );
   const rows = [
      [ 'Vendor', `${ module.vendor } ${ module.part_number } ${ module.vendor_revision ?? '' }` ],
      [ 'Serial', [ module.serial, module.date ?? module.date_code ].filter( words => words ).join( ', ' ) ],
      [ 'Type', [ nameOf( module.identifier ), ...( module.compliance ?? [] ), module.extended_compliance?.code ? nameOf( module.extended_compliance ) : '',
         ...module.applications.slice( 0, 1 ).map( one => nameOf( one.media ) ) ].filter( words => words ).join( ', ' ) ],
      [ 'Fibre', [ nameOf( module.connector ), nameOf( module.technology ), module.wavelength ? `${ numberInWords( module.wavelength ) } nm` : '',
         module.lengths.map( one => `${ one.medium } ${ numberInWords( one.metres ) } m${ one.or_more ? ' or more' : '' }` ).join( ', ' ) ].filter( words => words ).join( ', ' ) ],
      [ 'Standard', `${ module.standard }, revision ${ module.revision }${ module.flat ? ', no pages' : '' }` ],
      [ 'State', [ nameOf( module.module_state ) ?? ( module.ready === false ? 'not ready' : '' ), module.low_power ? 'low power' : '',
         module.maximum_power ? `at most ${ numberInWords( module.maximum_power ) } W` : '' ].filter( words => words ).join( ', ' ) ],
      ...module.monitors.filter( one => !one.lane ).map( one => [ spaced( one.quantity ), one ] ),
      [ 'Checksums', bad.length ? `wrong: ${ bad.map( sum => sum.name ).join( ', ' ) }` : 'right' ],
   ];
   return [ title,
      element( 'p', {}, `read ${ inWords( told.age ) } ago${ told.state === 'ok' ? '' : `, ${ told.state }` }` ),
      module.worst ? element( 'p', { class: 'fault' }, module.worst ) : null,
      element( 'dl', {}, ...rows.filter( ( [ , words ] ) => words ).flatMap( ( [ name, words ] ) => [ element( 'dt', {}, name ),
         element( 'dd', {}, ...( typeof words === 'string' ? [ words ]
            : [ valueOf( words ), ...raised( words ).map( ( [ flag, level ] ) => element( 'span', { class: `flag ${ level }` }, ` ${ markOf( level ) } ${ flag }` ) ) ] ) ) ] ) ),
      lanesTable( module ) ].filter( part => part );
}
