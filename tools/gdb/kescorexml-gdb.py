# Lets gdb show elements of kescorexml as a tag with the children below, and documents as their
# elements. gdb loads this by itself for an installed library; otherwise: source kescorexml-gdb.py
# Documents and attributes are shown where the library has its debugging information; attributes that
# a program has changed, or asked for as a map, where gdb has the printers of the standard library.

import gdb
import gdb.printing
import gdb.types


def shown(text):
    """A TString as its own printer shows it."""
    return text.format_string()


def unquoted(text):
    """A name as its printer shows it, without the quotes."""
    return text.strip('"') if text.endswith('"') else text.replace('"', "")


def without_type(value):
    """What there is to say of an object when nobody knows what is in it."""
    return "%s at %s <no type information>" % (gdb.types.get_basic_type(value.type), value.address)


def children_of(element):
    """The child elements, some of which may have been taken out."""
    header = element["m_children"]["m_header"]
    if not header:
        return
    # The owners, each a pointer, stand behind the header.
    pointer = gdb.types.get_basic_type(element.type).pointer()
    owner = (header + 1).cast(pointer.pointer())
    for index in range(int(header["size"])):
        child = (owner + index).dereference()
        yield "[%d]" % index, child.dereference() if child else child


def as_far_as_known(children):
    """The children up to one that cannot be had, and then why."""
    try:
        yield from children
    except gdb.error as error:
        yield "...", "<%s>" % error


def packed_attributes(block):
    """Names and values of an AttributeBlock: the values stand one behind the other."""
    rep = gdb.lookup_type("TString::Rep")
    names = block["m_names"]
    slot = block["m_slots"].address.cast(rep.pointer())
    string = gdb.lookup_type("TString")
    for index in range(int(names["m_count"])):
        name = names["m_names"]["_M_elems"][index]
        # A slot is what a string points to.
        holder = gdb.Value(int(slot).to_bytes(string.sizeof, "little"), string)
        yield shown(name), shown(holder)
        units = (int(slot["lengthAndFlag"]) & 0x7FFFFFFF) + 1
        size = (rep.sizeof + 2 * units + 3) // 4 * 4
        slot = gdb.Value(int(slot) + size).cast(rep.pointer())


def mapped_attributes(box):
    pairs = gdb.default_visualizer(box["map"]).children()
    for (_, name), (_, value) in zip(pairs, pairs):
        yield shown(name), shown(value)


def attributes_of(element):
    """' a="1"' for each attribute, or ' ...' where nobody knows how they are kept."""
    state = int(element["m_attributes"]["m_state"]["_M_i"])
    if state == 0:
        return ""
    try:
        if state & 1:
            box = gdb.lookup_type("AttributeStorage::Box").pointer()
            attributes = mapped_attributes(gdb.Value(state & ~1).cast(box))
        else:
            block = gdb.lookup_type("AttributeBlock").pointer()
            attributes = packed_attributes(gdb.Value(state).cast(block))
        return "".join(" %s=%s" % (unquoted(name), value) for name, value in sorted(attributes))
    except (gdb.error, AttributeError):
        return " ..."


class ElementPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            tag = "<" + unquoted(shown(self.value["m_name"])) + attributes_of(self.value) + ">"
            text = shown(self.value["m_text"])
        except gdb.MemoryError:
            raise
        except gdb.error:
            return without_type(self.value)
        return tag if text == '""' else tag + " " + text

    def children(self):
        known = gdb.types.has_field(self.value.type, "m_children")
        return as_far_as_known(children_of(self.value)) if known else iter(())


class DocumentPrinter:
    def __init__(self, value):
        self.value = value
        # Programs leave it to the library to tell what is in a document.
        self.known = gdb.types.has_field(value.type, "m_root")

    def to_string(self):
        return "DOM" if self.known else without_type(self.value)

    def children(self):
        return as_far_as_known(self.elements()) if self.known else iter(())

    def elements(self):
        # A std::unique_ptr is nothing but its pointer, however that is wrapped.
        pointer = gdb.lookup_type("DOMElement").pointer()
        root = self.value["m_root"].address.cast(pointer.pointer()).dereference()
        if root:
            yield from children_of(root.dereference())


def make_printers():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("kescorexml")
    printers.add_printer("DOMElement", "^DOMElement$", ElementPrinter)
    printers.add_printer("DOM", "^DOM$", DocumentPrinter)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), make_printers(), replace=True)
