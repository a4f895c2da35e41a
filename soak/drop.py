"""Drops files on a window as a file manager does, by the XDND protocol, version 5."""

from Xlib import X, Xatom
from Xlib.protocol import event

VERSION = 5


class Source:
    """Where files are dragged from."""

    def __init__(self, display):
        self.display = display
        self.atom = display.atom
        self.window = display.helper
        self.uris = b""

    def drop(self, window, x, y, uris, patience):
        """Moves over a place of the window and lets go there. Returns whether the window took the files."""
        self.uris = "".join(uri + "\r\n" for uri in uris).encode()
        self.window.set_selection_owner(self.atom("XdndSelection"), X.CurrentTime)
        place = self.display.root.translate_coords(window, 0, 0)
        self.tell(window, "XdndEnter", VERSION << 24, self.atom("text/uri-list"))
        self.tell(window, "XdndPosition", 0, (place.x + x) << 16 | (place.y + y), X.CurrentTime,
                  self.atom("XdndActionCopy"))
        status = self.answer("XdndStatus", patience)
        if not status[1] & 1:
            self.tell(window, "XdndLeave")
            return False
        self.tell(window, "XdndDrop", 0, X.CurrentTime)
        return bool(self.answer("XdndFinished", patience)[1] & 1)

    def tell(self, window, message, *data):
        values = ([self.window.id, *data] + [0] * 5)[:5]
        window.send_event(event.ClientMessage(window=window, client_type=self.atom(message), data=(32, values)))
        self.display.x.flush()

    def answer(self, message, patience):
        return patience.until(lambda: self.read(self.atom(message)), 5, f"{message} in answer to a drop", "drop")

    def read(self, message):
        """Serves who asks for the files; returns the data of the message when it has come."""
        x = self.display.x
        while x.pending_events():
            happened = x.next_event()
            if happened.type == X.SelectionRequest:
                self.serve(happened)
            elif happened.type == X.ClientMessage and happened.client_type == message:
                return list(happened.data[1])
        return None

    def serve(self, request):
        target = self.atom("text/uri-list")
        is_served = request.target == target
        if is_served:
            request.requestor.change_property(request.property, target, 8, self.uris)
        elif request.target == self.atom("TARGETS"):
            is_served = True
            request.requestor.change_property(request.property, Xatom.ATOM, 32, [target])
        request.requestor.send_event(event.SelectionNotify(
            time=request.time, requestor=request.requestor, selection=request.selection, target=request.target,
            property=request.property if is_served else X.NONE))
        self.display.x.flush()
