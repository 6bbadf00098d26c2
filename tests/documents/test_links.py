"""What the documents link to, show and name exists."""

import documents
import pytest

EVERY_DOCUMENT = pytest.mark.parametrize("path", documents.documents(), ids=str)
# Code spans that start with one of these name a file or a folder of this tree; the extension may be missing.
TOP_FOLDERS = ("components/", "docs/", "gui/", "launcher/", "packaging/", "scripts/", "tests/")


@EVERY_DOCUMENT
def test_links_lead_somewhere(path):
    for link in documents.links(path):
        assert "://" not in link, f"{link}: links outside this tree are not allowed"
        name, _, anchor = link.partition("#")
        target = (documents.ROOT / path.parent / name).resolve() if name else documents.ROOT / path
        assert target.exists(), link
        if anchor:
            assert anchor in documents.anchors(target.relative_to(documents.ROOT)), link


def test_every_picture_is_shown():
    shown = {
        (documents.ROOT / path.parent / link).resolve()
        for path in documents.documents()
        for link in documents.links(path)
    }
    pictures = set((documents.ROOT / "docs/pictures").iterdir())
    assert pictures
    assert pictures <= shown


def test_every_page_is_linked_from_the_readme():
    linked = {link.partition("#")[0] for link in documents.links(documents.README)}
    pages = {str(path) for path in documents.documents()} - {str(documents.README)}
    assert pages <= linked


@EVERY_DOCUMENT
def test_named_files_exist(path):
    for span in documents.spans(path):
        if span.startswith(TOP_FOLDERS) and " " not in span:
            found = [*documents.ROOT.glob(span), *documents.ROOT.glob(f"{span}.*")]
            assert found, span
