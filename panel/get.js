// What serve answers at a path. Throws an Error with its reason.
export async function get( path ) {
   const answer = await fetch( path );
   const json = await answer.json().catch( () => ( {} ) );
   if ( !answer.ok )
      throw new Error( json.error ?? `${ path }: HTTP ${ answer.status }` );
   return json;
}
