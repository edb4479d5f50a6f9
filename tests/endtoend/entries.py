"""How the host describes items to send, and file names that are easily broken on the way to it."""

ODD_NAMES = ["plain", "with space", "it's", 'the "best"', "100%25 %F", "two\nlines", "naïve 🎈",
             "$HOME `x` \\", "-dash", "a:b"]


def odd_files(folder):
    for name in ODD_NAMES:
        (folder / name).write_text(name)
    return [folder / name for name in ODD_NAMES]


def file_entry(path):
    return {"path": str(path), "name": path.name, "size": path.stat().st_size, "kind": "file"}


def text_entry(text):
    return {"path": "", "name": "Shared text", "size": len(text.encode()), "kind": "text",
            "text": text}
