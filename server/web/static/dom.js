// Elements made from data: text always goes in as textContent, never as markup.
export function el(tag, options = {}, children = []) {
  const node = document.createElement(tag);
  if (options.class) node.className = options.class;
  if (options.text !== undefined) node.textContent = options.text;
  for (const [name, value] of Object.entries(options.attrs ?? {})) node.setAttribute(name, value);
  for (const child of children) node.append(child);
  return node;
}

export function show(id, visible) {
  document.getElementById(id).hidden = !visible;
}

// A status colour as the client paints it: six hex digits or white.
export function safeColour(colour) {
  return /^#[0-9A-Fa-f]{6}$/.test(colour) ? colour : '#FFFFFF';
}
