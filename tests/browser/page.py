"""What the front panel shows, as a person reads it: texts and marks of the page as plain values."""

from processes import within

READ = """
const text = ( node, what ) => node.querySelector( what )?.textContent.trim() ?? '';
const all = ( what, make, within = document ) => [ ...within.querySelectorAll( what ) ].map( make );
return {
   link: document.body.dataset.link,
   status: text( document, '#status' ),
   age: text( document, '#age' ),
   causes: all( '#causes > li', li => ( { cause: li.dataset.cause, level: li.dataset.level, number: li.dataset.number,
      title: text( li, '.title' ), words: text( li, '.words' ), explains: text( li, '.explains' ) } ) ),
   places: Object.fromEntries( all( '#box g.place', g => [ g.dataset.object,
      { level: g.dataset.level, marks: g.dataset.marks ?? '', label: g.getAttribute( 'aria-label' ), side: g.closest( 'svg' ).dataset.side } ] ) ),
   held: all( '#busses [data-path][data-held]', segment => [ segment.closest( '[data-bus]' ).dataset.bus, segment.dataset.path ] ),
   heldBusses: Object.fromEntries( all( '#busses [data-bus][data-held]', bus => [ bus.dataset.bus, bus.dataset.held ] ) ),
   events: all( '#events > li', li => ( { id: Number( li.dataset.event ), text: li.textContent.replace( /\\s+/g, ' ' ).trim(), words: text( li, '.words' ) } ) ),
   object: document.querySelector( '#object' ).hidden ? null : { name: text( document, '#object h2' ),
      values: Object.fromEntries( all( '#object tr[data-value]', row => [ row.dataset.value,
         { value: text( row, '.value' ), state: text( row, '.state' ), level: row.dataset.level } ] ) ) },
};
"""


def read(browser):
    return browser.execute_script(READ)


def link(browser):
    return browser.execute_script("return document.body.dataset.link")


def open_page(browser, url, path="/"):
    browser.get(url + path)
    wait_for_link(browser, "live")


def wait_for_link(browser, state, seconds=20):
    within(seconds, lambda: link(browser) == state,
           lambda: f"the page is {state}: it is {link(browser)}, and says {read(browser)['status']}")


def open_object(browser, name):
    browser.execute_script("location.hash = '#object/' + encodeURIComponent( arguments[ 0 ] )", name)
    within(10, lambda: read(browser)["object"] and read(browser)["object"]["name"] == name
           and read(browser)["object"]["values"], f"the page shows {name} with its values")


def whole(browser):
    """Shows the rest of the names that a cause explains, too."""
    browser.execute_script("document.querySelectorAll( '#causes .explains .more' ).forEach( one => one.click() )")
