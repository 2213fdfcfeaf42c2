// Calls of the server's JSON routes. The session cookie goes along by itself; a display token
// goes in the Authorization header.
export async function api(path, { method = 'GET', body, token } = {}) {
  const headers = { Accept: 'application/json' };
  if (body !== undefined) headers['Content-Type'] = 'application/json';
  if (token) headers.Authorization = `Bearer ${token}`;
  let response;
  try {
    response = await fetch(path, {
      method,
      headers,
      body: body === undefined ? undefined : JSON.stringify(body),
      credentials: 'same-origin',
      cache: 'no-store',
    });
  } catch {
    return { status: 0, data: { error: 'The server cannot be reached.' } };
  }
  let data = {};
  try {
    data = await response.json();
  } catch {
    data = { error: `The server answered ${response.status}.` };
  }
  return { status: response.status, data };
}
