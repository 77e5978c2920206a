"""The lab's parts: the topology model and its reader, the run's record,
the namespaces and links, the switch and its rules, the responders, and
the frames sent and received by hand."""


class LabError(Exception):
    """A failure told to the user in one line."""
